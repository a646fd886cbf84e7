#include "ZUMChunkedOutputStream.h"

#include "RVKMacros.h"
#include "ZUMRaise.h"

namespace {

char const k_crlf[] = "\r\n";
char const k_size_method[] = "ZUMChunkedOutputStream::ZUMChunkedOutputStream - size must be 1 or more";

}  // namespace

ZUMChunkedOutputStream::ZUMChunkedOutputStream(ZUMOutputStream& out, int size)
    : m_out(out), m_chunk(static_cast<unsigned>(ZUM_POSITIVE_SIZE(size, k_size_method)),
                         static_cast<unsigned>(size)),
      m_size_line(256, 256), m_chunk_size(size)
{
    ZUMFilterOutputStream::wrap(out);
}

ZUMChunkedOutputStream::~ZUMChunkedOutputStream() = default;

void ZUMChunkedOutputStream::write(char const* bytes, int count)
{
    RVK_ASSERT(bytes);
    while (count > 0) {
        int room = m_chunk_size - m_chunk.pcount();
        int n = count < room ? count : room;
        m_chunk.appendChars(bytes, static_cast<unsigned>(n));
        bytes += n;
        count -= n;
        if (m_chunk.pcount() == m_chunk_size) {
            writeChunk();
        }
    }
}

void ZUMChunkedOutputStream::flush()
{
    writeChunk();
}

void ZUMChunkedOutputStream::close()
{
    flush();
    writeChunkSize(0);
}

void ZUMChunkedOutputStream::writeChunkSize(int n)
{
    m_size_line.reset();
    m_size_line.setHexRadix(1);
    m_size_line << n << k_crlf;
    if (n == 0) {
        m_size_line << k_crlf;
    }
    m_out.write(m_size_line.str(), m_size_line.pcount());
}

void ZUMChunkedOutputStream::writeChunk()
{
    if (m_chunk.pcount() == 0) {
        return;
    }
    writeChunkSize(m_chunk.pcount());
    m_out.write(m_chunk.str(), m_chunk.pcount());
    m_chunk.reset();
    m_out.write(k_crlf, 2);
}
