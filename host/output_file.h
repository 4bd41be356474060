// output_file.h - an output written under a temporary name beside its target and renamed into place when complete
#pragma once

#include <cstdio>
#include <string>

// A failed or abandoned output leaves nothing behind: the temporary file is
// removed unless commit() succeeded.
class OutputFile {
public:
    explicit OutputFile(std::string target);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Creates the temporary file; false with error when it cannot.
    bool open(std::string& error);
    std::FILE* stream() const { return stream_; }
    // Flushes, closes and renames the temporary file to the target.
    bool commit(std::string& error);

private:
    std::string target_;
    std::string temporary_;
    std::FILE* stream_ = nullptr;
    bool committed_ = false;
};
