#pragma once

// MD5 (RFC 1321), to hold what we read against ffmpeg's digests.

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

namespace Halvorn::Test::Essence
{

class Md5
{
public:
    void update(const void* data, std::size_t size)
    {
        const auto* bytes = static_cast<const std::uint8_t*>(data);
        length_ += size;
        while (size > 0)
        {
            const std::size_t take = std::min(size, std::size_t(64) - fill_);
            std::memcpy(block_ + fill_, bytes, take);
            fill_ += take;
            bytes += take;
            size -= take;
            if (fill_ == 64)
            {
                round();
                fill_ = 0;
            }
        }
    }

    std::string hex()
    {
        const std::uint64_t bits = length_ * 8;
        const std::uint8_t pad = 0x80;
        update(&pad, 1);
        const std::uint8_t zero = 0;
        while (fill_ != 56)
            update(&zero, 1);
        std::uint8_t tail[8];
        for (int i = 0; i < 8; ++i)
            tail[i] = std::uint8_t(bits >> (8 * i));
        update(tail, 8);
        std::string text;
        char two[3];
        for (const std::uint32_t word : state_)
            for (int i = 0; i < 4; ++i)
            {
                std::snprintf(two, sizeof two, "%02x", unsigned(word >> (8 * i)) & 0xFF);
                text += two;
            }
        return text;
    }

private:
    static std::uint32_t rotate(std::uint32_t x, int n) { return (x << n) | (x >> (32 - n)); }

    static const std::uint32_t* constants()
    {
        static const auto table = []
        {
            struct Table
            {
                std::uint32_t k[64];
            } t;
            for (int i = 0; i < 64; ++i)
                t.k[i] =
                    std::uint32_t(std::floor(std::fabs(std::sin(double(i + 1))) * 4294967296.0));
            return t;
        }();
        return table.k;
    }

    void round()
    {
        static const int shifts[64] = {7, 12, 17, 22, 7, 12, 17, 22, 7, 12, 17, 22, 7, 12, 17, 22,
                                       5, 9,  14, 20, 5, 9,  14, 20, 5, 9,  14, 20, 5, 9,  14, 20,
                                       4, 11, 16, 23, 4, 11, 16, 23, 4, 11, 16, 23, 4, 11, 16, 23,
                                       6, 10, 15, 21, 6, 10, 15, 21, 6, 10, 15, 21, 6, 10, 15, 21};
        std::uint32_t m[16];
        for (int i = 0; i < 16; ++i)
            m[i] = std::uint32_t(block_[4 * i]) | std::uint32_t(block_[4 * i + 1]) << 8 |
                   std::uint32_t(block_[4 * i + 2]) << 16 | std::uint32_t(block_[4 * i + 3]) << 24;
        std::uint32_t a = state_[0], b = state_[1], c = state_[2], d = state_[3];
        for (int i = 0; i < 64; ++i)
        {
            std::uint32_t f;
            int g;
            if (i < 16)
                f = (b & c) | (~b & d), g = i;
            else if (i < 32)
                f = (d & b) | (~d & c), g = (5 * i + 1) % 16;
            else if (i < 48)
                f = b ^ c ^ d, g = (3 * i + 5) % 16;
            else
                f = c ^ (b | ~d), g = (7 * i) % 16;
            const std::uint32_t next = b + rotate(a + f + constants()[i] + m[g], shifts[i]);
            a = d;
            d = c;
            c = b;
            b = next;
        }
        state_[0] += a;
        state_[1] += b;
        state_[2] += c;
        state_[3] += d;
    }

    std::uint32_t state_[4] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    std::uint8_t block_[64] = {};
    std::size_t fill_ = 0;
    std::uint64_t length_ = 0;
};

} // namespace Halvorn::Test::Essence
