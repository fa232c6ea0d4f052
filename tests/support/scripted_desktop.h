#pragma once
#include <deque>
#include <string>
#include <vector>

#include "common/desktop.h"

namespace testing_support {

// A Desktop whose answers are given in advance; it records every box shown,
// every pointer change and counts the message pumps.
class ScriptedDesktop : public corvan::Desktop {
public:
    struct Box {
        std::string text;
        int style;
        std::string title;
    };

    void Answer(int button) { answers_.push_back(button); }

    int MsgBox(const std::string& text, int style, const std::string& title) override {
        boxes.push_back({text, style, title});
        if (answers_.empty()) return corvan::msgbox::vbOK;
        int answer = answers_.front();
        answers_.pop_front();
        return answer;
    }
    void SetMousePointer(int pointer) override { pointers.push_back(pointer); }
    void DoEvents() override { ++pumps; }
    bool ExitSession(unsigned flags, unsigned) override {
        exits.push_back(flags);
        return true;
    }

    std::vector<Box> boxes;
    std::vector<int> pointers;
    int pumps = 0;
    std::vector<unsigned> exits;  // the flags of each session end asked for

private:
    std::deque<int> answers_;
};

}  // namespace testing_support
