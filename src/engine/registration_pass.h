#pragma once
#include <string>

#include "common/keyed_collection.h"
#include "engine/install_engine.h"
#include "items/ItemRecord.h"

namespace corvan {

// The engine's Registration walk over colItems: registers (or, before an
// uninstall, unregisters) every item that asks for it, reporting each step
// through the engine's status and progress events. A failure inside the walk
// is trapped and reported through InstallerError with the walk's own context
// text. Answers the last error text that a registration returned.
std::string Registration(KeyedCollection<ItemRecord>& colItems, bool unregister, InstallEngineEvents& events);

}  // namespace corvan
