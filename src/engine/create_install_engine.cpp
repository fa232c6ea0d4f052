// The product's engine: the control that links this file installs for real.
#include "engine/clsInstall.h"

namespace corvan {

std::unique_ptr<InstallEngine> CreateInstallEngine(InstallEngineEvents& events, Desktop& desktop) {
    return std::make_unique<clsInstall>(events, desktop);
}

}  // namespace corvan
