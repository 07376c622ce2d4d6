#include "tessar/debugdraw/DebugDraw.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace koDebugDraw {

namespace {

struct Registry {
    std::mutex mutex;
    std::map<std::string, void*, std::less<>> interfaces;
};

// Made on first use and never destroyed, so that lookups from other objects' destructors at
// process exit still find a live registry.
Registry& registry() {
    static Registry* const instance = new Registry;
    return *instance;
}

} // namespace

void registerIFace(const char* name, void* iface) {
    if (name == nullptr) {
        return;
    }
    Registry& r = registry();
    const std::lock_guard lock(r.mutex);
    if (iface == nullptr) {
        auto found = r.interfaces.find(std::string_view(name));
        if (found != r.interfaces.end()) {
            r.interfaces.erase(found);
        }
        return;
    }
    r.interfaces.insert_or_assign(std::string(name), iface);
}

void* loadIFace(const char* name) {
    if (name == nullptr) {
        return nullptr;
    }
    Registry& r = registry();
    const std::lock_guard lock(r.mutex);
    auto found = r.interfaces.find(std::string_view(name));
    return found != r.interfaces.end() ? found->second : nullptr;
}

} // namespace koDebugDraw
