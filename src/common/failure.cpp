#include "common/failure.h"

#include <new>

namespace corvan {

Failure::Failure(int32_t number, std::string source, std::string description)
    : std::runtime_error(description), number_(number), source_(std::move(source)),
      description_(std::move(description)) {}

std::string RuntimeErrorDescription(int32_t number) {
    switch (number) {
        case error::kInvalidProcedureCall: return "Invalid procedure call or argument";
        case error::kOverflow: return "Overflow";
        case error::kOutOfMemory: return "Out of memory";
        case error::kSubscriptOutOfRange: return "Subscript out of range";
        case error::kTypeMismatch: return "Type mismatch";
        case error::kFileNotFound: return "File not found";
        case error::kPermissionDenied: return "Permission denied";
        case error::kPathFileAccessError: return "Path/File access error";
        case error::kPathNotFound: return "Path not found";
        case error::kDuplicateKey: return "This key is already associated with an element of this collection";
        default: return "Application-defined or object-defined error";
    }
}

Failure RuntimeError(int32_t number, std::string source) {
    return Failure(number, std::move(source), RuntimeErrorDescription(number));
}

Failure FailureInFlight(const std::string& source) {
    try {
        throw;
    } catch (const Failure& failure) {
        return failure;
    } catch (const std::bad_alloc&) {
        return RuntimeError(error::kOutOfMemory, source);
    } catch (const std::exception& problem) {
        return Failure(error::kInvalidProcedureCall, source, problem.what());
    } catch (...) {
        return RuntimeError(error::kInvalidProcedureCall, source);
    }
}

}  // namespace corvan
