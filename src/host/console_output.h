#pragma once
#include <string>

namespace corvan::host {

// Where the host writes. On a console the panel's status is one line that is
// rewritten in place; into a file or a pipe every change is a line of its own.
class ConsoleOutput {
public:
    ConsoleOutput();

    // A line that stays: an event, a question, a trace line, the summary.
    void Line(const std::string& text);
    // The panel's current status; shown only when it changed.
    void Status(const std::string& text);
    // Ends an open status line so that the next output starts clean.
    void Settle();

private:
    void Write(const std::string& text);

    void* stdout_;
    bool console_ = false;
    int width_ = 80;
    bool statusOpen_ = false;
    std::string lastStatus_;
};

}  // namespace corvan::host
