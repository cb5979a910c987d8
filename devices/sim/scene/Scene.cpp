#include "devices/sim/scene/Scene.h"

#include <cstdio>
#include <new>

#include "devices/sim/scene/SceneBuiltin.h"
#include "devices/sim/scene/SceneFile.h"

namespace zel::sim {

std::unique_ptr<Scene> MakeScene(const std::string& name, unsigned width, unsigned height) noexcept {
    try {
        if (!name.empty() && name != "builtin") {
            std::string reason;
            if (auto picture = SceneFile::Load(name, width, height, reason)) return picture;
            std::fprintf(stderr, "scene \"%s\" can't be read (%s): using the built-in scene\n", name.c_str(),
                         reason.c_str());
        }
        return std::make_unique<SceneBuiltin>(width, height);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace zel::sim
