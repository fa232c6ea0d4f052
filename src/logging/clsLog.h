#pragma once
#include <cstdio>
#include <string>

namespace corvan {

// The install log: one ANSI text file, one time-stamped line per message.
class clsLog {
public:
    clsLog() = default;
    ~clsLog();
    clsLog(const clsLog&) = delete;
    clsLog& operator=(const clsLog&) = delete;

    // Empty or blank reads as the library's base name + "-LogFile.log".
    std::string FileName() const;
    void FileName(std::string value) { fileName_ = std::move(value); }

    // The folder with its trailing backslash; empty or blank reads as "C:\".
    std::string path() const;
    void path(std::string value) { path_ = std::move(value); }

    // "OPEN" while a file is held, "CLOSED" otherwise.
    std::string FileStatus() const { return file_ ? "OPEN" : "CLOSED"; }

    // Opens path + FileName, creating it, for appending or for writing anew.
    // Throws the Failure of the open; the log is then closed.
    void OpenLogFile(std::string fileName, std::string folder, bool append);

    // Writes one line. While closed, first opens (and empties) the default
    // file; a failure of that open is raised again. Returns false when the
    // write itself fails.
    bool WriteLogEvent(const std::string& message);

    // Opens the log in the system text editor without waiting.
    void ReadLogFile();

    // Closes the file; a failing close is ignored and the file dropped anyway.
    void CloseLogFile();

private:
    std::string fileName_;
    std::string path_;
    std::FILE* file_ = nullptr;
};

}  // namespace corvan
