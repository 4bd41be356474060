// output_file.h - where an output may be written, and the file written under a temporary name and renamed into place
#pragma once

#include <cstdio>
#include <string>

// "-" as an output path: the picture goes to standard output.
extern const char* const standardOutput;

// Decides, before anything is decoded, whether output may be written for
// input. A careful tool never replaces what a user did not mean to replace,
// so it refuses (false, error naming output) when output is the input file
// itself, a directory, a device, a FIFO or a socket, when its folder does not
// exist, and when it is a symbolic link: replacing the link would leave its
// target as it was, which is never what was asked. With followLinks the link
// is followed and its target, checked the same way, is written instead.
// target gets the path to write: output, its link's target, or "-".
bool checkOutput(const std::string& output, const std::string& input, bool followLinks, std::string& target,
                 std::string& error);

// A failed or abandoned output leaves nothing behind: the temporary file is
// removed unless commit() succeeded. Errors name shownAs, the path the user gave.
class OutputFile {
public:
    OutputFile(std::string target, std::string shownAs);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Creates the temporary file (or takes standard output); false with error when it cannot.
    bool open(std::string& error);
    std::FILE* stream() const { return stream_; }
    // Flushes, closes and renames the temporary file to the target.
    bool commit(std::string& error);

private:
    std::string target_;
    std::string shownAs_;
    std::string temporary_;
    std::FILE* stream_ = nullptr;
    bool committed_ = false;
};
