#pragma once
#include <cstdio>
#include <mutex>
#include <string>

namespace corvan {

// The install log: one ANSI text file, one time-stamped line per message.
// Controls on several threads of one process share the process's log, so
// every member takes the log's lock.
class clsLog {
public:
    clsLog() = default;
    ~clsLog();
    clsLog(const clsLog&) = delete;
    clsLog& operator=(const clsLog&) = delete;

    // Empty or blank reads as the library's base name + "-LogFile.log".
    std::string FileName() const;
    void FileName(std::string value);

    // The folder with its trailing backslash; empty or blank reads as "C:\".
    std::string path() const;
    void path(std::string value);

    // "OPEN" while a file is held, "CLOSED" otherwise.
    std::string FileStatus() const;

    // Opens path + FileName, creating it, for appending or for writing anew.
    // Throws the Failure of the open; the log is then closed.
    void OpenLogFile(std::string fileName, std::string folder, bool append);

    // Writes one line. While closed, first opens (and empties) the default
    // file, "C:\" + base name + "-LogFile.log"; where "C:\" refuses it (a
    // standard user on Windows 7 and later), the same name in the user's
    // temporary folder. When neither opens, the failure of the first is
    // raised. Returns false when the write itself fails.
    bool WriteLogEvent(const std::string& message);

    // Opens the log in the system text editor without waiting.
    void ReadLogFile();

    // Closes the file; a failing close is ignored and the file dropped anyway.
    void CloseLogFile();

private:
    void Open(std::string fileName, std::string folder, bool append);
    void Close();
    // The user's temporary folder with its closing separator; empty when
    // there is none.
    static std::string UserTemporaryFolder();

    mutable std::mutex mutex_;
    std::string fileName_;
    std::string path_;
    std::FILE* file_ = nullptr;
};

}  // namespace corvan
