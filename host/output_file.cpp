// output_file.cpp - temporary output file in the target's directory, renamed on success, removed otherwise
#include "output_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

namespace {

// Distinguishes the temporary names of outputs written at the same time.
std::atomic<unsigned int> temporaryCounter{0};

std::string temporaryName(const std::string& target) {
    const std::string::size_type slash = target.rfind('/');
    const std::string dir = slash == std::string::npos ? "" : target.substr(0, slash + 1);
    const std::string base = slash == std::string::npos ? target : target.substr(slash + 1);
    return dir + "." + base + "." + std::to_string(getpid()) + "." + std::to_string(temporaryCounter++) + ".tmp";
}

} // namespace

OutputFile::OutputFile(std::string target) : target_(std::move(target)) {}

OutputFile::~OutputFile() {
    if (stream_ != nullptr) std::fclose(stream_);
    if (!committed_ && !temporary_.empty()) std::remove(temporary_.c_str());
}

bool OutputFile::open(std::string& error) {
    int fd = -1;
    do {
        temporary_ = temporaryName(target_);
        fd = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (fd < 0 && errno == EEXIST);
    if (fd < 0) {
        error = "cannot create " + temporary_ + ": " + std::strerror(errno);
        temporary_.clear();
        return false;
    }
    stream_ = fdopen(fd, "wb");
    if (stream_ == nullptr) {
        error = "cannot write " + temporary_ + ": " + std::strerror(errno);
        ::close(fd);
        return false;
    }
    return true;
}

bool OutputFile::commit(std::string& error) {
    const bool written = std::ferror(stream_) == 0;
    const bool closed = std::fclose(stream_) == 0;
    stream_ = nullptr;
    if (!written || !closed) {
        error = "cannot write " + target_ + ": " + std::strerror(errno);
        return false;
    }
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) {
        error = "cannot rename " + temporary_ + " to " + target_ + ": " + std::strerror(errno);
        return false;
    }
    committed_ = true;
    return true;
}
