#include "progress.h"

#include <cstdio>

#include "streams.h"

namespace zumcat {

namespace {

auto const k_redraw_interval = std::chrono::milliseconds(250);

// A byte count for a status line: "999 B", "12.3 kB", "45.6 MB", "7.8 GB".
std::string amount(double bytes)
{
    char const* const units[] = {"B", "kB", "MB", "GB", "TB"};
    int unit = 0;
    while (bytes >= 1000 && unit < 4) {
        bytes /= 1000;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, units[unit]);
    return text;
}

std::string duration(double seconds)
{
    long s = static_cast<long>(seconds + 0.5);
    char text[32];
    std::snprintf(text, sizeof text, "%ld:%02ld", s / 60, s % 60);
    return text;
}

}  // namespace

Progress::Progress(InputCounter const& in, StandardOutput const& out, long long inputSize, bool terminal)
    : m_in(in), m_out(out), m_input_size(inputSize), m_terminal(terminal), m_start(Clock::now()), m_last(m_start)
{
}

std::string Progress::figures(double seconds) const
{
    double in = static_cast<double>(m_in.count());
    std::string text = amount(in) + " in, " + amount(static_cast<double>(m_out.count())) + " out, " +
                       amount(seconds > 0 ? in / seconds : 0) + "/s";
    if (m_input_size > 0) {
        text += ", " + std::to_string(static_cast<int>(100 * in / static_cast<double>(m_input_size))) + "%";
    }
    return text;
}

void Progress::redrawIfDue()
{
    Clock::time_point now = Clock::now();
    if (now - m_last < k_redraw_interval) {
        return;
    }
    m_last = now;
    double seconds = std::chrono::duration<double>(now - m_start).count();
    std::string line = figures(seconds);
    double in = static_cast<double>(m_in.count());
    if (m_input_size > 0 && in > 0 && seconds > 0) {
        line += ", " + duration((static_cast<double>(m_input_size) - in) * seconds / in) + " left";
    }
    std::fprintf(stderr, "\rzumcat: %s\033[K", line.c_str());
    std::fflush(stderr);
}

void Progress::finish()
{
    double seconds = std::chrono::duration<double>(Clock::now() - m_start).count();
    if (m_terminal) {
        std::fprintf(stderr, "\rzumcat: %s, %s\033[K\n", figures(seconds).c_str(), duration(seconds).c_str());
    } else {
        double rate = seconds > 0 ? static_cast<double>(m_in.count()) / seconds : 0;
        std::fprintf(stderr, "zumcat: %lld bytes in, %lld bytes out, %.2f s, %s/s\n", m_in.count(), m_out.count(),
                     seconds, amount(rate).c_str());
    }
    std::fflush(stderr);
}

}  // namespace zumcat
