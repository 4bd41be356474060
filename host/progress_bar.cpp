// progress_bar.cpp - redraws "[#####.....] done/total" in place with a carriage return
#include "progress_bar.h"

#include <cstdio>
#include <string>

namespace {
constexpr size_t barWidth = 40;
}

ProgressBar::ProgressBar(size_t total, bool enabled) : total_(total), enabled_(enabled && total > 0)
{
    std::lock_guard<std::mutex> lock(mutex_);
    draw();
}

void ProgressBar::advance()
{
    std::lock_guard<std::mutex> lock(mutex_);
    ++done_;
    draw();
}

void ProgressBar::finish()
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (!enabled_)
        return;
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(barWidth + 32), "");
    std::fflush(stderr);
    enabled_ = false;
}

void ProgressBar::draw()
{
    if (!enabled_)
        return;
    const size_t filled = done_ * barWidth / total_;
    const std::string bar = std::string(filled, '#') + std::string(barWidth - filled, '.');
    std::fprintf(stderr, "\r[%s] %zu/%zu", bar.c_str(), done_, total_);
    std::fflush(stderr);
}
