// test_header.cpp - imgLoadHeader: the status and exact description text of every case in header_cases.txt
#include <gtest/gtest.h>

#include "support/recipe.h"

using namespace vktest;

TEST(Header, EveryCase)
{
    const auto cases = readRecipes(std::string(VKTIFF_SOURCE_DIR) + "/tests/data/header_cases.txt");
    ASSERT_GT(cases.size(), 20u);
    for (const Recipe& r : cases) {
        SCOPED_TRACE(r.name);
        const Bytes file = r.build();
        LoadedTiff t = loadTiff(file, Recipe::loadedBytes(r.headLoaded, file.size()));
        EXPECT_EQ(t.status, std::stoul(r.expect.at("status")));
        const _vkString<250>& text = t.info.infoText;
        EXPECT_EQ(std::string(text.text, text.text + std::min<int>(text.length, 250)), r.expect.at("text"));
    }
}

TEST(Header, IncompleteCallRecordIsRefused)
{
    LoadedTiff t = prepareTiff(Bytes(8, 0));
    EXPECT_EQ(imgLoadHeader(nullptr), 4u);
    _dataIMG_Header noFile{nullptr, &t.info, t.header.get()};
    _dataIMG_Header noInfo{t.file.get(), nullptr, t.header.get()};
    _dataIMG_Header noHeader{t.file.get(), &t.info, nullptr};
    for (_dataIMG_Header* call : {&noFile, &noInfo, &noHeader})
        EXPECT_EQ(imgLoadHeader(call), 4u);
}
