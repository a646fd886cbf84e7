#ifndef ZUM_TEST_FILES_H
#define ZUM_TEST_FILES_H

// Files and independent producers for tests: a temporary directory, whole
// files, the fixtures and tables of tests/data, external programs (python3,
// gzip; a test skips when one is missing) and zlib's own deflate.

#include <unistd.h>
#include <zlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

inline std::string readFile(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// A file of tests/data, by its path below that directory.
inline std::string dataFile(std::string const& name)
{
    return readFile(std::string(ZUM_TEST_DATA_DIR) + "/" + name);
}

// The rows of a table in tests/data: one row a line (a line that starts with
// # is a comment), fields apart by tabs. In a field \r, \n, \t, \\ and \xHH
// stand for their bytes; a field @NAME is the content of the data file NAME.
inline std::vector<std::vector<std::string>> dataTable(std::string const& name)
{
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(dataFile(name));
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == '#') {
            continue;
        }
        rows.emplace_back(1);
        for (std::size_t i = 0; i < line.size(); ++i) {
            bool const escaped = line[i] == '\\' && ++i < line.size();
            char c = line[i];
            std::string const hex = escaped && c == 'x' ? line.substr(i + 1, 2) : "";
            i += hex.size();
            if (escaped) {
                std::size_t const named = std::string("rnt").find(c);
                c = hex.size() ? static_cast<char>(std::stoi(hex, nullptr, 16)) : named < 3 ? "\r\n\t"[named] : c;
            }
            if (!escaped && c == '\t') {
                rows.back().emplace_back();
            } else {
                rows.back().back() += c;
            }
        }
        for (auto& field : rows.back()) {
            field = field.size() > 1 && field[0] == '@' ? dataFile(field.substr(1)) : field;
        }
    }
    return rows;
}

// A fresh directory under the temporary directory, removed with its content
// when the object goes.
class TempDir {
public:
    TempDir() : m_path((std::filesystem::temp_directory_path() / "zumtest-XXXXXX").string())
    {
        if (!::mkdtemp(m_path.data())) {
            throw std::runtime_error("mkdtemp failed");
        }
    }
    ~TempDir() { std::error_code ignored; std::filesystem::remove_all(m_path, ignored); }
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    std::string const& path() const { return m_path; }
    std::string file(std::string const& name) const { return m_path + "/" + name; }
    // Writes `bytes` to the file `name` here and returns its path.
    std::string write(std::string const& name, std::string const& bytes) const
    {
        std::ofstream(file(name), std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return file(name);
    }

private:
    std::string m_path;
};

inline bool haveProgram(char const* program)
{
    return std::system((std::string("command -v ") + program + " >/dev/null 2>&1").c_str()) == 0;
}

// Runs a shell command; returns whether it exited with 0.
inline bool runCommand(std::string const& command)
{
    return std::system(command.c_str()) == 0;
}

inline std::string shellQuoted(std::string const& path)
{
    std::string q = "'";
    for (char c : path) {
        q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return q + "'";
}

// zlib's deflate over `content` in one call, with the given window bits (-15:
// raw deflate, 31: a gzip member made by zlib), level and strategy.
inline std::string zlibDeflate(std::string const& content, int window_bits = 31, int level = Z_DEFAULT_COMPRESSION,
                               int strategy = Z_DEFAULT_STRATEGY)
{
    z_stream z{};
    deflateInit2(&z, level, Z_DEFLATED, window_bits, 8, strategy);
    std::string out(deflateBound(&z, content.size()) + 64, '\0');
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
    z.avail_in = static_cast<uInt>(content.size());
    z.next_out = reinterpret_cast<Bytef*>(&out[0]);
    z.avail_out = static_cast<uInt>(out.size());
    out.resize(deflate(&z, Z_FINISH) == Z_STREAM_END ? z.total_out : 0);
    deflateEnd(&z);
    return out;
}

// zlib's inflate over all of `data`, with the given window bits (-15: raw
// deflate, 31: one gzip member, trailer checked); a text that says so when
// the data is not exactly one complete deflate stream or member.
inline std::string zlibInflate(std::string const& data, int window_bits = 31)
{
    z_stream z{};
    inflateInit2(&z, window_bits);
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    z.avail_in = static_cast<uInt>(data.size());
    std::string out;
    char buf[16384];
    int status = Z_OK;
    while (status == Z_OK) {
        z.next_out = reinterpret_cast<Bytef*>(buf);
        z.avail_out = sizeof buf;
        status = inflate(&z, Z_NO_FLUSH);
        out.append(buf, sizeof buf - z.avail_out);
    }
    inflateEnd(&z);
    if (status != Z_STREAM_END || z.avail_in != 0) {
        return "zlib inflate: status " + std::to_string(status) + ", " + std::to_string(z.avail_in) +
               " bytes left";
    }
    return out;
}

#endif
