// zumcat: the --progress report on standard error.
//
// On a terminal, one status line updated in place about four times a second:
// bytes in, bytes out, the rate of input, and percent and time left when the
// input size is known; finish() leaves it with the final figures. Elsewhere
// (a file, a pipe), nothing until finish() writes one summary line.
#ifndef ZUMCAT_PROGRESS_H
#define ZUMCAT_PROGRESS_H

#include <chrono>
#include <string>

namespace zumcat {

class InputCounter;
class StandardOutput;

class Progress {
public:
    // Reports on `in` and `out`; `inputSize` is the input's size in bytes, or
    // -1 when unknown. `terminal`: update a status line in place.
    Progress(InputCounter const& in, StandardOutput const& out, long long inputSize, bool terminal);

    // Called after every read and write: redraws the status line when due.
    void tick()
    {
        if (m_terminal) {
            redrawIfDue();
        }
    }
    // The final figures: the status line ended, or the summary line.
    void finish();

private:
    void redrawIfDue();
    // "12.3 MB in, 16.4 MB out, 98.1 MB/s" and, when known, ", 42%".
    std::string figures(double seconds) const;

    using Clock = std::chrono::steady_clock;
    InputCounter const& m_in;
    StandardOutput const& m_out;
    long long m_input_size;
    bool m_terminal;
    Clock::time_point m_start;
    Clock::time_point m_last;
};

}  // namespace zumcat

#endif
