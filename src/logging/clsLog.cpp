#include "logging/clsLog.h"

#include <cerrno>

#include "common/clock.h"
#include "common/failure.h"
#include "common/text.h"
#include "corvan/build_config.h"
#include "logging/log_line.h"

namespace corvan {

namespace {

Failure OpenFailure(int err) {
    int32_t number = error::kPathFileAccessError;
    if (err == ENOENT) number = error::kPathNotFound;
    if (err == EACCES) number = error::kPermissionDenied;
    return RuntimeError(number, CORVAN_BASE_NAME);
}

}  // namespace

clsLog::~clsLog() { CloseLogFile(); }

std::string clsLog::FileName() const {
    if (Trim(fileName_).empty()) return std::string(CORVAN_BASE_NAME) + "-LogFile.log";
    return fileName_;
}

std::string clsLog::path() const {
    if (Trim(path_).empty()) return "C:\\";
    return path_;
}

void clsLog::OpenLogFile(std::string fileName, std::string folder, bool append) {
    fileName_ = std::move(fileName);
    path_ = std::move(folder);
    if (file_) CloseLogFile();
    // Binary mode: the line ends are written as CR LF by the line format
    // itself, on every platform.
    std::string full = path() + FileName();
    file_ = std::fopen(full.c_str(), append ? "ab" : "wb");
    if (!file_) throw OpenFailure(errno);
}

bool clsLog::WriteLogEvent(const std::string& message) {
    if (!file_) OpenLogFile("", "", false);
    std::string line = FormatLogLine(NowLocal(), message);
    // Flushed at once: the help desk reads the log of a session that hung.
    return std::fwrite(line.data(), 1, line.size(), file_) == line.size() && std::fflush(file_) == 0;
}

void clsLog::CloseLogFile() {
    if (file_) std::fclose(file_);
    file_ = nullptr;
}

}  // namespace corvan
