// plugin_library.cpp - dlopen of the plug-in, dlsym of its entry points, and the interface-version handshake
#include "plugin_library.h"

#include <dlfcn.h>

#include <cstdio>

namespace {

template <typename Fn>
void lookUp(void* handle, const char* name, Fn& entry)
{
    entry = reinterpret_cast<Fn>(dlsym(handle, name));
}

struct NamedEntry {
    const char* name;
    const void* entry;
};

} // namespace

PluginLibrary::~PluginLibrary()
{
    if (handle_ != nullptr)
        dlclose(handle_);
}

bool PluginLibrary::open(const std::string& path, std::string& error)
{
    // Lazy binding: a library still missing parts of its own loads, and only
    // calls that reach a missing part fail.
    handle_ = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* why = dlerror();
        error = "cannot load " + path + ": " + (why != nullptr ? why : "unknown reason");
        return false;
    }
    path_ = path;
    lookUp(handle_, "imgInfo", entries_.info);
    lookUp(handle_, "imgLoadHeader", entries_.loadHeader);
    lookUp(handle_, "imgDecode8", entries_.decode8);
    lookUp(handle_, "imgDecode16", entries_.decode16);
    lookUp(handle_, "imgDecodef", entries_.decodef);
    lookUp(handle_, "imgEncode8", entries_.encode8);
    lookUp(handle_, "imgEncode16", entries_.encode16);
    lookUp(handle_, "imgEncodef", entries_.encodef);
    return true;
}

std::vector<std::string> PluginLibrary::missing() const
{
    const NamedEntry all[] = {
        {"imgInfo", reinterpret_cast<const void*>(entries_.info)},
        {"imgLoadHeader", reinterpret_cast<const void*>(entries_.loadHeader)},
        {"imgDecode8", reinterpret_cast<const void*>(entries_.decode8)},
        {"imgDecode16", reinterpret_cast<const void*>(entries_.decode16)},
        {"imgDecodef", reinterpret_cast<const void*>(entries_.decodef)},
        {"imgEncode8", reinterpret_cast<const void*>(entries_.encode8)},
        {"imgEncode16", reinterpret_cast<const void*>(entries_.encode16)},
        {"imgEncodef", reinterpret_cast<const void*>(entries_.encodef)},
    };
    std::vector<std::string> names;
    for (const NamedEntry& e : all)
        if (e.entry == nullptr)
            names.push_back(e.name);
    return names;
}

bool PluginLibrary::require(const void* entry, const char* name, std::string& error) const
{
    if (entry != nullptr)
        return true;
    error = path_ + " does not define the entry point " + name;
    return false;
}

bool PluginLibrary::handshake(std::string& error)
{
    if (!require(reinterpret_cast<const void*>(entries_.info), "imgInfo", error))
        return false;
    description_ = PluginDescription{};
    _imgPluginInfo& info = description_.record();
    info.interfaceVersion = vkInterfaceVersion;
    const unsigned int status = entries_.info(&info);
    if (status != vkStatusOk) {
        char text[96];
        std::snprintf(text, sizeof text, "imgInfo refused interface version 0x%04X (status %u)", vkInterfaceVersion,
                      status);
        error = text;
        return false;
    }
    return true;
}
