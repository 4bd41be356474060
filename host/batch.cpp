// batch.cpp - collects the input files, converts them on a pool of threads, reports failures and a summary
#include "batch.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <set>
#include <thread>

#include "commands.h"
#include "file_masks.h"
#include "host_text.h"
#include "progress_bar.h"

namespace fs = std::filesystem;

namespace {

struct Job {
    std::string input;
    std::string output;
    bool converted = false;
    unsigned long long pixels = 0;
    std::string error;
};

// Files named on the command line are taken as they are; directories give
// their entries that match the masks, sorted by name.
bool collectInputs(const std::vector<std::string>& inputs, const std::string& masks, std::vector<std::string>& files,
                   std::string& error)
{
    for (const std::string& input : inputs) {
        std::error_code ec;
        if (!fs::is_directory(input, ec)) {
            files.push_back(input);
            continue;
        }
        std::vector<std::string> found;
        for (const fs::directory_entry& entry : fs::directory_iterator(input, ec)) {
            std::error_code kind;
            if (entry.is_regular_file(kind) && matchesMasks(entry.path().filename().string(), masks))
                found.push_back(entry.path().string());
        }
        if (ec) {
            error = "cannot list " + input + ": " + ec.message();
            return false;
        }
        std::sort(found.begin(), found.end());
        files.insert(files.end(), found.begin(), found.end());
    }
    return true;
}

// Two inputs of the same name would overwrite each other's output.
bool planOutputs(const std::vector<std::string>& files, const BatchOptions& options, std::vector<Job>& jobs,
                 std::string& error)
{
    std::set<std::string> outputs;
    for (const std::string& file : files) {
        Job job;
        job.input = file;
        job.output = (fs::path(options.outDir) / fs::path(file).stem()).string() + outputExtension(options.convert);
        if (!outputs.insert(job.output).second) {
            error = "two inputs would both be written to " + job.output;
            return false;
        }
        jobs.push_back(job);
    }
    return true;
}

unsigned int threadCount(unsigned int wanted, size_t jobs)
{
    unsigned int n = wanted != 0 ? wanted : std::max(1u, std::thread::hardware_concurrency());
    return static_cast<unsigned int>(std::min<size_t>(n, jobs));
}

} // namespace

int runBatch(const PluginLibrary& plugin, const std::vector<std::string>& inputs, const BatchOptions& options)
{
    std::vector<std::string> files;
    std::vector<Job> jobs;
    std::string error;
    const std::string masks = hostText(plugin.description().record().fileMasks);
    if (!collectInputs(inputs, masks, files, error) || !planOutputs(files, options, jobs, error))
        return fail(error);
    if (jobs.empty())
        return fail("no files matching " + masks + " found");
    std::error_code ec;
    fs::create_directories(options.outDir, ec);
    if (ec)
        return fail("cannot create " + options.outDir + ": " + ec.message());

    const auto start = std::chrono::steady_clock::now();
    const unsigned int threads = threadCount(options.threads, jobs.size());
    ProgressBar progress(jobs.size(), isatty(STDERR_FILENO) != 0);
    std::atomic<size_t> next{0};
    auto work = [&]() {
        for (size_t i = next++; i < jobs.size(); i = next++) {
            Job& job = jobs[i];
            job.converted = convertFile(plugin, job.input, job.output, options.convert, job.pixels, job.error);
            progress.advance();
        }
    };
    std::vector<std::thread> pool;
    for (unsigned int t = 0; t < threads; ++t)
        pool.emplace_back(work);
    for (std::thread& t : pool)
        t.join();
    progress.finish();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    size_t failed = 0;
    unsigned long long pixels = 0;
    for (const Job& job : jobs) {
        pixels += job.pixels;
        if (job.converted)
            continue;
        ++failed;
        std::fprintf(stderr, "vkhost: %s\n", job.error.c_str());
    }
    std::printf("converted %zu of %zu files to %s: %llu pixels in %.3f s on %u thread%s, %zu failed\n",
                jobs.size() - failed, jobs.size(), options.outDir.c_str(), pixels, seconds, threads,
                threads == 1 ? "" : "s", failed);
    if (failed == 0)
        return exitOk;
    return failed == jobs.size() ? exitFailure : exitSomeFailed;
}
