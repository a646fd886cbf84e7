#ifndef ZUM_EXTERNAL_TOOL_H
#define ZUM_EXTERNAL_TOOL_H

// Helpers for tests that let an independent program (python3, gzip) check
// what the library wrote: a scratch directory, file I/O, and running a
// command. Tests GTEST_SKIP when the program is missing.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include <unistd.h>

// Whether `program` can be found on the PATH.
inline bool haveProgram(char const* program)
{
    std::string command = std::string("command -v ") + program + " >/dev/null 2>&1";
    return std::system(command.c_str()) == 0;
}

// Runs a shell command; returns whether it exited with 0.
inline bool runCommand(std::string const& command)
{
    return std::system(command.c_str()) == 0;
}

// A directory of its own under the temporary directory, removed with its
// content at destruction.
class ScratchDir {
public:
    ScratchDir()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "zumtest-XXXXXX").string();
        if (::mkdtemp(pattern.data())) {
            m_path = pattern;
        }
    }
    ~ScratchDir()
    {
        std::error_code ignored;
        if (!m_path.empty()) {
            std::filesystem::remove_all(m_path, ignored);
        }
    }
    ScratchDir(ScratchDir const&) = delete;
    ScratchDir& operator=(ScratchDir const&) = delete;

    bool ok() const { return !m_path.empty(); }
    std::string file(std::string const& name) const { return m_path + "/" + name; }
    std::string const& path() const { return m_path; }

private:
    std::string m_path;
};

inline void writeFile(std::string const& path, std::string const& bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string readFile(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// A shell-quoted path (single quotes).
inline std::string shellQuoted(std::string const& path)
{
    std::string q = "'";
    for (char c : path) {
        q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return q + "'";
}

#endif
