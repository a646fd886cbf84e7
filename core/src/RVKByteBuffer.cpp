#include "RVKByteBuffer.h"

#include <climits>
#include <cstdint>
#include <new>
#include <utility>

#include "RVKMacros.h"
#include "RVKOutOfMemoryError.h"

namespace {

// The storage of every buffer whose capacity is 0. It holds one NUL byte and
// is never written (see the guards on m_length below).
char g_empty[1] = {'\0'};

char* allocateStorage(unsigned capacity)
{
    if (capacity == 0) {
        return g_empty;
    }
    // One more byte for the terminating NUL.
    char* data = capacity == UINT_MAX ? nullptr : new (std::nothrow) char[capacity + 1u];
    if (!data) {
        RVK_THROW(RVKOutOfMemoryError(0, nullptr), "RVKByteBuffer - allocation failed");
    }
    return data;
}

void releaseStorage(char* data)
{
    if (data != g_empty) {
        delete[] data;
    }
}

}  // namespace

RVKByteBuffer::RVKByteBuffer(unsigned initial, unsigned increment)
    : m_data(allocateStorage(initial)), m_length(0), m_capacity(initial),
      m_increment(increment), m_hex(false)
{
    if (m_capacity != 0) {
        m_data[0] = '\0';
    }
}

RVKByteBuffer::RVKByteBuffer(RVKByteBuffer const& other)
    : m_data(allocateStorage(other.m_length)), m_length(other.m_length),
      m_capacity(other.m_length), m_increment(other.m_increment), m_hex(other.m_hex)
{
    if (m_capacity != 0) {
        std::memcpy(m_data, other.m_data, m_length + 1u);
    }
}

RVKByteBuffer::RVKByteBuffer(RVKByteBuffer&& other) noexcept
    : m_data(other.m_data), m_length(other.m_length), m_capacity(other.m_capacity),
      m_increment(other.m_increment), m_hex(other.m_hex)
{
    other.m_data = g_empty;
    other.m_length = 0;
    other.m_capacity = 0;
}

RVKByteBuffer& RVKByteBuffer::operator=(RVKByteBuffer const& other)
{
    if (this != &other) {
        RVKByteBuffer copy(other);
        *this = std::move(copy);
    }
    return *this;
}

RVKByteBuffer& RVKByteBuffer::operator=(RVKByteBuffer&& other) noexcept
{
    if (this != &other) {
        std::swap(m_data, other.m_data);
        std::swap(m_length, other.m_length);
        std::swap(m_capacity, other.m_capacity);
        m_increment = other.m_increment;
        m_hex = other.m_hex;
    }
    return *this;
}

RVKByteBuffer::~RVKByteBuffer()
{
    releaseStorage(m_data);
}

void RVKByteBuffer::grow(unsigned needed)
{
    // Geometric growth, never by less than the increment.
    unsigned long long target = m_capacity;
    target += m_capacity > m_increment ? m_capacity : m_increment;
    if (target < needed) {
        target = needed;
    }
    if (target >= UINT_MAX) {
        target = UINT_MAX - 1u;
        if (target < needed) {
            RVK_THROW(RVKOutOfMemoryError(0, nullptr), "RVKByteBuffer - size limit reached");
        }
    }
    char* data = allocateStorage(static_cast<unsigned>(target));
    std::memcpy(data, m_data, m_length + 1u);
    releaseStorage(m_data);
    m_data = data;
    m_capacity = static_cast<unsigned>(target);
}

void RVKByteBuffer::appendSlow(char const* bytes, unsigned n)
{
    if (n > UINT_MAX - 1u - m_length) {
        RVK_THROW(RVKOutOfMemoryError(0, nullptr), "RVKByteBuffer - size limit reached");
    }
    // The bytes may lie inside this buffer, whose storage grow() replaces.
    std::uintptr_t const from = reinterpret_cast<std::uintptr_t>(bytes);
    std::uintptr_t const base = reinterpret_cast<std::uintptr_t>(m_data);
    bool const inside = from >= base && from < base + m_length;
    grow(m_length + n);
    if (inside) {
        bytes = m_data + (from - base);
    }
    std::memcpy(m_data + m_length, bytes, n);
    m_length += n;
    m_data[m_length] = '\0';
}

void RVKByteBuffer::setLength(unsigned n)
{
    if (n > m_capacity) {
        unsigned old = m_capacity;
        // grow() copies the bytes up to the length: make it keep the whole
        // room, which the caller may have written behind the content.
        unsigned const length = m_length;
        m_length = old;
        try {
            grow(n);
        } catch (...) {
            m_length = length;
            throw;
        }
        std::memset(m_data + old, 0, n - old);
    }
    if (n == 0 && m_capacity == 0) {
        return;  // the shared empty storage
    }
    m_length = n;
    m_data[m_length] = '\0';
}

void RVKByteBuffer::chop(unsigned n)
{
    if (n == 0) {
        return;
    }
    if (n >= m_length) {
        reset();
        return;
    }
    std::memmove(m_data, m_data + n, m_length - n);
    m_length -= n;
    m_data[m_length] = '\0';
}

RVKByteBuffer& RVKByteBuffer::operator<<(int value)
{
    char digits[16];
    int pos = sizeof digits;
    if (m_hex) {
        unsigned v = static_cast<unsigned>(value);
        do {
            digits[--pos] = "0123456789abcdef"[v & 0xFu];
            v >>= 4;
        } while (v != 0);
    } else {
        // Work in unsigned so that INT_MIN needs no special case.
        unsigned v = value < 0 ? 0u - static_cast<unsigned>(value) : static_cast<unsigned>(value);
        do {
            digits[--pos] = static_cast<char>('0' + v % 10u);
            v /= 10u;
        } while (v != 0);
        if (value < 0) {
            digits[--pos] = '-';
        }
    }
    appendChars(digits + pos, static_cast<unsigned>(sizeof digits - pos));
    return *this;
}

RVKByteBuffer& RVKByteBuffer::operator<<(char const* text)
{
    if (text) {
        appendChars(text, static_cast<unsigned>(std::strlen(text)));
    }
    return *this;
}
