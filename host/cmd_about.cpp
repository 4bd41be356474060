// cmd_about.cpp - `vkhost about`: prints the description the plug-in wrote in the imgInfo handshake
#include <cstdio>

#include "commands.h"
#include "host_text.h"

int runAbout(PluginLibrary& plugin, const std::vector<std::string>& args)
{
    if (!args.empty())
        return fail("about takes no arguments");
    const _imgPluginInfo& info = plugin.description().record();
    std::printf("Library:          %s\n", plugin.path().c_str());
    std::printf("Format name:      %s\n", hostText(info.formatName).c_str());
    std::printf("File masks:       %s\n", hostText(info.fileMasks).c_str());
    std::printf("Author:           %s\n", hostText(info.author).c_str());
    std::printf("Plug-in version:  %s\n", hostText(info.pluginVersion).c_str());
    std::printf("Library version: \"%s\"\n", hostText(info.libraryVersion).c_str());
    std::printf("Extra version:    %s\n", hostText(info.extraVersion).c_str());
    std::printf("Header bytes:     %u\n", info.headerBytes);
    std::printf("Capability flags: %u (0x%04X)\n", info.capabilityFlags, info.capabilityFlags);
    std::string missing;
    for (const std::string& name : plugin.missing())
        missing += " " + name;
    std::printf("Entry points:     %s\n", missing.empty() ? "all eight present" : ("missing" + missing).c_str());
    return exitOk;
}
