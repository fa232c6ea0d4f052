#include "logging/write_log.h"

namespace corvan {

clsLog& GlobalLog() {
    static clsLog log;
    return log;
}

}  // namespace corvan
