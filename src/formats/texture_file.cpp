// 3DF texture files: header lines, level count and texel conversion. Every read is checked
// against the length of the data; the header's numbers are checked before anything is
// allocated, so a short file never causes a large allocation.
#include "formats/texture_file.h"

#include <cstring>
#include <new>

namespace norvgl {

namespace {

struct Line {
    const char* text;
    std::size_t length; // including the line feed
};

// The line starting at `offset`: it ends at the first line feed, which must come within
// kTdfMaxLineLength bytes and before the data ends.
bool readLine(const std::uint8_t* data, std::size_t size, std::size_t& offset, Line& line) {
    const std::size_t limit = size - offset < kTdfMaxLineLength ? size - offset : kTdfMaxLineLength;
    const void* feed = std::memchr(data + offset, '\n', limit);
    if (feed == nullptr) {
        return false;
    }
    line.text = reinterpret_cast<const char*>(data + offset);
    line.length =
        static_cast<std::size_t>(static_cast<const std::uint8_t*>(feed) - data) + 1 - offset;
    offset += line.length;
    return true;
}

bool lineIs(const Line& line, const char* expected) {
    const std::size_t length = std::strlen(expected);
    return line.length == length && std::memcmp(line.text, expected, length) == 0;
}

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// Scans `line` against a pattern of literal text, spaces (any run of white space, also
// none) and "%d" (optional white space, sign and decimal digits, within 32 bits). Text after
// the last conversion is ignored. False unless both numbers are filled.
bool scanTwo(const Line& line, const char* pattern, std::int32_t& first, std::int32_t& second) {
    std::size_t at = 0;
    std::int32_t* targets[2] = {&first, &second};
    int filled = 0;
    for (const char* p = pattern; *p != '\0'; ++p) {
        if (p[0] == '%' && p[1] == 'd') {
            ++p;
            while (at < line.length && isSpace(line.text[at])) {
                ++at;
            }
            bool negative = false;
            if (at < line.length && (line.text[at] == '-' || line.text[at] == '+')) {
                negative = line.text[at] == '-';
                ++at;
            }
            std::int64_t value = 0;
            std::size_t digits = 0;
            while (at < line.length && line.text[at] >= '0' && line.text[at] <= '9') {
                value = value * 10 + (line.text[at] - '0');
                if (value > std::int64_t{1} << 31) {
                    return false;
                }
                ++at;
                ++digits;
            }
            if (digits == 0) {
                return false;
            }
            value = negative ? -value : value;
            if (value > INT32_MAX) {
                return false;
            }
            *targets[filled++] = static_cast<std::int32_t>(value);
        } else if (isSpace(*p)) {
            while (at < line.length && isSpace(line.text[at])) {
                ++at;
            }
        } else {
            if (at >= line.length || line.text[at] != *p) {
                return false;
            }
            ++at;
        }
    }
    return filled == 2;
}

bool isPowerOfTwo(std::int32_t value) {
    return value > 0 && (value & (value - 1)) == 0;
}

} // namespace

std::int32_t tdfLevelDimension(std::int32_t size0, std::int32_t level) {
    std::int32_t size = size0;
    for (std::int32_t i = 0; i < level; ++i) {
        size = (size & ~1) > 2 ? size / 2 : 1;
    }
    return size;
}

std::int32_t tdfLevelCount(std::int32_t small, std::int32_t large) {
    std::int32_t count = 1;
    for (std::int32_t c = large >> 1; c > small; c >>= 1) {
        ++count;
    }
    return count;
}

void tdfConvertTexel(TdfFormat format, std::uint16_t texel, std::uint8_t rgb[3]) {
    const std::uint32_t p = texel;
    if (format == TdfFormat::Rgb565) {
        rgb[0] = static_cast<std::uint8_t>((p >> 8) & 0xF8);
        rgb[1] = static_cast<std::uint8_t>((p >> 3) & 0xFC);
        rgb[2] = static_cast<std::uint8_t>((p << 3) & 0xFF);
    } else {
        rgb[0] = static_cast<std::uint8_t>(((p >> 5) & 7) * 36);
        rgb[1] = static_cast<std::uint8_t>(((p >> 2) & 7) * 36);
        rgb[2] = static_cast<std::uint8_t>((p & 3) * 85);
    }
}

TdfResult parseTdfHeader(const std::uint8_t* data, std::size_t size, TdfHeader& header) {
    if (data == nullptr) {
        return TdfResult::BadHeader;
    }
    std::size_t offset = 0;
    Line magic{};
    Line format{};
    Line range{};
    Line aspect{};
    if (!readLine(data, size, offset, magic) || !lineIs(magic, kTdfMagicLine) ||
        !readLine(data, size, offset, format)) {
        return TdfResult::BadHeader;
    }
    TdfHeader facts;
    if (lineIs(format, "rgb565\n")) {
        facts.format = TdfFormat::Rgb565;
    } else if (lineIs(format, "argb8332\n")) {
        facts.format = TdfFormat::Argb8332;
    } else {
        return TdfResult::BadHeader;
    }
    if (!readLine(data, size, offset, range) ||
        !scanTwo(range, "lod range: %d %d", facts.small, facts.large) ||
        !readLine(data, size, offset, aspect) ||
        !scanTwo(aspect, "aspect ratio: %d %d", facts.a1, facts.a2)) {
        return TdfResult::BadHeader;
    }
    if (facts.small <= 0 || facts.a1 == 0 || facts.a2 == 0) {
        return TdfResult::BadSizes;
    }
    facts.width = facts.a2 == -1 && facts.large == INT32_MIN ? 0 : facts.large / facts.a2;
    facts.height = facts.a1 == -1 && facts.large == INT32_MIN ? 0 : facts.large / facts.a1;
    if (!isPowerOfTwo(facts.width) || !isPowerOfTwo(facts.height)) {
        return TdfResult::BadSizes;
    }
    facts.levelCount = tdfLevelCount(facts.small, facts.large);
    if (facts.levelCount > kTdfMaxLevels) {
        return TdfResult::TooManyLevels;
    }
    facts.dataOffset = offset;
    header = facts;
    return TdfResult::Ok;
}

TdfResult readTextureFile(const std::uint8_t* data, std::size_t size, TdfImage& image) {
    for (TdfLevel& level : image.levels) {
        level = TdfLevel{};
    }
    TdfHeader header;
    const TdfResult parsed = parseTdfHeader(data, size, header);
    if (parsed != TdfResult::Ok) {
        return parsed;
    }
    // All levels must be present before any is converted.
    std::uint64_t needed = 0;
    for (std::int32_t i = 0; i < header.levelCount; ++i) {
        needed += 2 * static_cast<std::uint64_t>(tdfLevelDimension(header.width, i)) *
                  static_cast<std::uint64_t>(tdfLevelDimension(header.height, i));
    }
    if (needed > size - header.dataOffset) {
        return TdfResult::Truncated;
    }
    const std::uint8_t* texels = data + header.dataOffset;
    for (std::int32_t i = 0; i < header.levelCount; ++i) {
        TdfLevel& level = image.levels[i];
        level.width = tdfLevelDimension(header.width, i);
        level.height = tdfLevelDimension(header.height, i);
        const auto w = static_cast<std::size_t>(level.width);
        const auto h = static_cast<std::size_t>(level.height);
        level.rgb.reset(new (std::nothrow) std::uint8_t[4 * w * h]());
        if (!level.rgb) {
            for (TdfLevel& done : image.levels) {
                done = TdfLevel{};
            }
            return TdfResult::OutOfMemory;
        }
        // The file's first row lands in the buffer's last row.
        for (std::size_t row = 0; row < h; ++row) {
            std::uint8_t* out = level.rgb.get() + (h - 1 - row) * w * 3;
            for (std::size_t x = 0; x < w; ++x, texels += 2, out += 3) {
                tdfConvertTexel(header.format,
                                static_cast<std::uint16_t>(texels[0] << 8 | texels[1]), out);
            }
        }
    }
    image.header = header;
    return TdfResult::Ok;
}

} // namespace norvgl
