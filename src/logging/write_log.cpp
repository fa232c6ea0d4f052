#include "logging/modTrace.h"
#include "logging/write_log.h"

namespace corvan {

void WriteLog(const std::string& message) {
    GlobalLog().WriteLogEvent(message);
    Trace({message});
}

}  // namespace corvan
