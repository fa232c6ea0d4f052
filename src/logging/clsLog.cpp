#include "logging/clsLog.h"

#include <cerrno>
#include <filesystem>

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

namespace {

std::string DefaultFileName() { return std::string(CORVAN_BASE_NAME) + "-LogFile.log"; }
std::string OrDefault(const std::string& name) { return Trim(name).empty() ? DefaultFileName() : name; }
std::string OrRoot(const std::string& folder) { return Trim(folder).empty() ? "C:\\" : folder; }

}  // namespace

std::string clsLog::FileName() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return OrDefault(fileName_);
}

void clsLog::FileName(std::string value) {
    std::lock_guard<std::mutex> lock(mutex_);
    fileName_ = std::move(value);
}

std::string clsLog::path() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return OrRoot(path_);
}

void clsLog::path(std::string value) {
    std::lock_guard<std::mutex> lock(mutex_);
    path_ = std::move(value);
}

std::string clsLog::FileStatus() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return file_ ? "OPEN" : "CLOSED";
}

void clsLog::OpenLogFile(std::string fileName, std::string folder, bool append) {
    std::lock_guard<std::mutex> lock(mutex_);
    Open(std::move(fileName), std::move(folder), append);
}

void clsLog::Open(std::string fileName, std::string folder, bool append) {
    fileName_ = std::move(fileName);
    path_ = std::move(folder);
    if (file_) Close();
    // Binary mode: the line ends are written as CR LF by the line format
    // itself, on every platform.
    std::string full = OrRoot(path_) + OrDefault(fileName_);
    file_ = std::fopen(full.c_str(), append ? "ab" : "wb");
    if (!file_) throw OpenFailure(errno);
}

bool clsLog::WriteLogEvent(const std::string& message) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!file_) {
        try {
            Open("", "", false);
        } catch (const Failure&) {
            // The default file goes where the user may write when "C:\"
            // refuses it; the first failure is the one reported.
            const std::string temporary = UserTemporaryFolder();
            if (temporary.empty()) throw;
            try {
                Open("", temporary, false);
            } catch (const Failure&) {
            }
            if (!file_) {
                path_.clear();
                throw;
            }
        }
    }
    std::string line = FormatLogLine(NowLocal(), message);
    // Flushed at once: the help desk reads the log of a session that hung.
    return std::fwrite(line.data(), 1, line.size(), file_) == line.size() && std::fflush(file_) == 0;
}

void clsLog::CloseLogFile() {
    std::lock_guard<std::mutex> lock(mutex_);
    Close();
}

void clsLog::Close() {
    if (file_) std::fclose(file_);
    file_ = nullptr;
}

#ifndef _WIN32
std::string clsLog::UserTemporaryFolder() {
    std::error_code error;
    std::string folder = std::filesystem::temp_directory_path(error).string();
    if (error || folder.empty()) return {};
    if (folder.back() != '/') folder += '/';
    return folder;
}
#endif

}  // namespace corvan
