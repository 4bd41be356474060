// output_file.cpp - output checks, and a temporary output file in the target's directory, renamed on success
#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace fs = std::filesystem;

const char* const standardOutput = "-";

namespace {

// Distinguishes the temporary names of outputs written at the same time.
std::atomic<unsigned int> temporaryCounter{0};

std::string folderOf(const std::string& path)
{
    const std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string temporaryName(const std::string& target)
{
    const std::string::size_type slash = target.rfind('/');
    const std::string dir = slash == std::string::npos ? "" : target.substr(0, slash + 1);
    const std::string base = slash == std::string::npos ? target : target.substr(slash + 1);
    return dir + "." + base + "." + std::to_string(getpid()) + "." + std::to_string(temporaryCounter++) + ".tmp";
}

// What kind of thing a non-regular file is, for the refusal.
const char* kindOf(mode_t mode)
{
    if (S_ISDIR(mode))
        return "a directory";
    if (S_ISCHR(mode) || S_ISBLK(mode))
        return "a device";
    if (S_ISFIFO(mode))
        return "a FIFO";
    if (S_ISSOCK(mode))
        return "a socket";
    return "not a regular file";
}

// Checks path, which is not a symbolic link; shown names it in messages.
bool checkTarget(const std::string& path, const std::string& shown, const std::string& input, std::string& error)
{
    struct stat about {};
    if (lstat(path.c_str(), &about) != 0) {
        if (errno != ENOENT) {
            error = "cannot write " + shown + ": " + std::strerror(errno);
            return false;
        }
        const std::string folder = folderOf(path);
        struct stat dir {};
        if (stat(folder.c_str(), &dir) != 0) {
            error = "cannot write " + shown + ": folder " + folder +
                    (errno == ENOENT ? " does not exist" : ": " + std::string(std::strerror(errno)));
            return false;
        }
        if (!S_ISDIR(dir.st_mode)) {
            error = "cannot write " + shown + ": " + folder + " is not a folder";
            return false;
        }
        return true;
    }
    if (!S_ISREG(about.st_mode)) {
        error = "will not write " + shown + ": it is " + kindOf(about.st_mode);
        return false;
    }
    struct stat in {};
    if (stat(input.c_str(), &in) == 0 && in.st_dev == about.st_dev && in.st_ino == about.st_ino) {
        error = "will not write " + shown + ": it is the input file";
        return false;
    }
    return true;
}

bool isLink(const fs::path& path)
{
    struct stat about {};
    return lstat(path.c_str(), &about) == 0 && S_ISLNK(about.st_mode);
}

} // namespace

bool checkOutput(const std::string& output, const std::string& input, bool followLinks, std::string& target,
                 std::string& error)
{
    target = output;
    if (output == standardOutput)
        return true;
    struct stat about {};
    if (lstat(output.c_str(), &about) == 0 && S_ISLNK(about.st_mode)) {
        // Followed link by link, so that a link to a file yet to be made
        // names where that file goes.
        constexpr int maxLinks = 40;
        fs::path at = output;
        std::error_code ec;
        int links = 0;
        for (; links <= maxLinks && isLink(at); ++links) {
            const fs::path next = fs::read_symlink(at, ec);
            if (ec)
                break;
            at = (next.is_absolute() ? next : at.parent_path() / next).lexically_normal();
        }
        if (ec || links > maxLinks) {
            error = "cannot follow the symbolic link " + output + (ec ? ": " + ec.message() : ": too many links");
            return false;
        }
        const std::string resolved = at.string();
        if (!followLinks) {
            error = "will not write " + output + ": it is a symbolic link (to " + resolved +
                    "); --force writes to the file it points to";
            return false;
        }
        target = resolved;
        return checkTarget(resolved, output + " (link to " + resolved + ")", input, error);
    }
    return checkTarget(output, output, input, error);
}

OutputFile::OutputFile(std::string target, std::string shownAs)
    : target_(std::move(target)), shownAs_(std::move(shownAs))
{
}

OutputFile::~OutputFile()
{
    if (stream_ != nullptr && stream_ != stdout)
        std::fclose(stream_);
    if (!committed_ && !temporary_.empty())
        std::remove(temporary_.c_str());
}

bool OutputFile::open(std::string& error)
{
    if (target_ == standardOutput) {
        stream_ = stdout;
        return true;
    }
    int fd = -1;
    do {
        temporary_ = temporaryName(target_);
        fd = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (fd < 0 && errno == EEXIST);
    if (fd < 0) {
        error =
            "cannot write " + shownAs_ + ": cannot create a file in " + folderOf(target_) + ": " + std::strerror(errno);
        temporary_.clear();
        return false;
    }
    stream_ = fdopen(fd, "wb");
    if (stream_ == nullptr) {
        error = "cannot write " + shownAs_ + ": " + std::strerror(errno);
        ::close(fd);
        return false;
    }
    return true;
}

bool OutputFile::commit(std::string& error)
{
    if (stream_ == stdout) {
        stream_ = nullptr;
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
            error = "cannot write to standard output: " + std::string(std::strerror(errno));
            return false;
        }
        committed_ = true;
        return true;
    }
    const bool written = std::ferror(stream_) == 0;
    const bool closed = std::fclose(stream_) == 0;
    stream_ = nullptr;
    if (!written || !closed) {
        error = "cannot write " + shownAs_ + ": " + std::strerror(errno);
        return false;
    }
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) {
        error = "cannot write " + shownAs_ + ": " + std::strerror(errno);
        return false;
    }
    committed_ = true;
    return true;
}
