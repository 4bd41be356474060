// progress_bar.h - a one-line progress bar on stderr for batch work, drawn only when stderr is a terminal
#pragma once

#include <cstddef>
#include <mutex>

class ProgressBar {
public:
    // Draws nothing unless enabled (callers pass whether stderr is a tty).
    ProgressBar(size_t total, bool enabled);
    // One more item done; safe to call from several threads.
    void advance();
    // Removes the bar from the terminal line.
    void finish();

private:
    void draw();
    std::mutex mutex_;
    size_t total_;
    size_t done_ = 0;
    bool enabled_;
};
