// What a library holds between the first question about its cameras and the lib_unload that finds no transport alive;
// until then cameras stay as they are, plugged or not.
#ifndef DEVICES_KIT_LIBRARY_H
#define DEVICES_KIT_LIBRARY_H

#include <memory>

#include "devices/kit/Bus.h"

namespace zel::kit {

struct Library {
    explicit Library(const LibraryFacts& facts) : bus(facts.interface_type), plugin(facts.make(bus)) {}

    Bus bus;
    std::unique_ptr<Plugin> plugin;  // ends before the bus
};

// The library, which stays as long as the pointer does; null: there is no memory, or its plug-in could not be made.
std::shared_ptr<Library> CurrentLibrary();

// Runs an operation on it; `failed` when there is none or it threw.
template <class Result, class Operation>
Result OnLibrary(Result failed, Operation operation) {
    const std::shared_ptr<Library> library = CurrentLibrary();
    if (!library) return failed;
    try {
        return operation(*library);
    } catch (const std::exception&) {
        return failed;
    }
}

}  // namespace zel::kit

#endif
