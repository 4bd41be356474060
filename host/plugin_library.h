// plugin_library.h - the loaded plug-in: dlopen, the eight entry points looked up by name, the imgInfo handshake
#pragma once

#include <string>
#include <vector>

#include "plugin/entry_points.h"

// Signatures come from the project's declarations; the host only takes their
// types and calls through the pointers that dlsym returns.
struct EntryPoints {
    decltype(&imgInfo) info = nullptr;
    decltype(&imgLoadHeader) loadHeader = nullptr;
    decltype(&imgDecode8) decode8 = nullptr;
    decltype(&imgDecode16) decode16 = nullptr;
    decltype(&imgDecodef) decodef = nullptr;
    decltype(&imgEncode8) encode8 = nullptr;
    decltype(&imgEncode16) encode16 = nullptr;
    decltype(&imgEncodef) encodef = nullptr;
};

// Host-owned storage for the description record, zero-filled. The record's
// strings are shared by layout: the host never runs their constructors.
struct PluginDescription {
    alignas(_imgPluginInfo) unsigned char bytes[sizeof(_imgPluginInfo)] = {};
    _imgPluginInfo& record() { return *reinterpret_cast<_imgPluginInfo*>(bytes); }
    const _imgPluginInfo& record() const { return *reinterpret_cast<const _imgPluginInfo*>(bytes); }
};

class PluginLibrary {
public:
    PluginLibrary() = default;
    ~PluginLibrary();
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    // Loads the library and looks up every entry point. False, with the
    // loader's message in error, when the library cannot be loaded; absent
    // entry points are not an error here (see missing()).
    bool open(const std::string& path, std::string& error);

    // Calls imgInfo with interface version vkInterfaceVersion. False, with a
    // message, when imgInfo is absent or does not answer 1.
    bool handshake(std::string& error);

    // Names of the entry points the library does not define.
    std::vector<std::string> missing() const;
    // True when `entry` is present; otherwise error names it.
    bool require(const void* entry, const char* name, std::string& error) const;

    const std::string& path() const { return path_; }
    const EntryPoints& entries() const { return entries_; }
    const PluginDescription& description() const { return description_; }

private:
    void* handle_ = nullptr;
    std::string path_;
    EntryPoints entries_;
    PluginDescription description_;
};
