// recipe.h - test helper: TIFF test images described by a line of key=value fields, read from the case tables
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tiff_builder.h"

namespace vktest {

// One test input: how the file is written, how much of it the host loads,
// which parsed header fields a hostile host changes, and the target it hands
// to the decoders. Every field has the default of a plain, whole image.
struct Recipe {
    std::string name;
    ImageSpec image;
    std::string pattern = "smooth"; // smooth, noise, flat or edges (float specials)
    bool lzwClearWhenFull = true;
    std::string headLoaded;           // what imgLoadHeader sees: "" whole file, "N" bytes, "N%" of the file
    std::string loaded;               // what the decoders see, the same way
    std::vector<std::string> edits;   // parsed header changes: field+N, field=N, field[k]=N
    long long countDelta = 0;         // added to every stated strip or tile byte count
    std::vector<std::string> tags;    // extra entries, later ones win: tag:type:count:value
    std::vector<uint16_t> drop;       // tags left out
    std::vector<std::string> patches; // bytes written over the built file: offset:hexbytes
    std::string target;               // "" header size, "WxH", or "WxH/capacity"
    std::vector<int> alpha{0, 1};
    std::vector<int> entries{8, 16, 32};
    std::map<std::string, std::string> expect; // what a runner checks: status=N, text

    Bytes build() const;
    static long long loadedBytes(const std::string& loaded, size_t fileSize); // -1: whole file
    void applyEdits(TiffHeader& header) const;
};

// Reads a case table: one recipe per line, `name key=value ...`; a value
// list "a,b" expands into one recipe per value (names get "_key=value").
// '#' starts a comment; " | " ends the fields, the rest of the line is the
// expected text (expect["text"]).
std::vector<Recipe> readRecipes(const std::string& path);

} // namespace vktest
