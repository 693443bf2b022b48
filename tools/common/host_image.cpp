// PPM and PNG files of window pictures. The PNG writer chooses each row's filter by the
// smallest sum of absolute differences and compresses with fixed-code deflate.
#include "host_image.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

namespace norvgl::host {

namespace {

// Deflate's length and distance codes: base values and extra bits.
constexpr std::array<std::uint16_t, 29> kLengthBase = {3,  4,  5,  6,   7,   8,   9,   10,  11, 13,
                                                       15, 17, 19, 23,  27,  31,  35,  43,  51, 59,
                                                       67, 83, 99, 115, 131, 163, 195, 227, 258};
constexpr std::array<std::uint8_t, 29> kLengthExtra = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                                       2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
constexpr std::array<std::uint16_t, 30> kDistanceBase = {
    1,   2,   3,   4,   5,   7,    9,    13,   17,   25,   33,   49,   65,    97,    129,
    193, 257, 385, 513, 769, 1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
constexpr std::array<std::uint8_t, 30> kDistanceExtra = {0, 0, 0,  0,  1,  1,  2,  2,  3,  3,
                                                         4, 4, 5,  5,  6,  6,  7,  7,  8,  8,
                                                         9, 9, 10, 10, 11, 11, 12, 12, 13, 13};
constexpr int kMinMatch = 3;
constexpr int kMaxMatch = 258;
constexpr std::size_t kWindow = 32768;
constexpr int kHashBits = 15;
constexpr int kChainSteps = 48; // candidates tried per position: speed against size

class BitWriter {
public:
    std::vector<std::uint8_t> bytes;
    // Values whose bits go out least significant first (extra bits, block headers).
    void bits(std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i)
            bit((value >> i) & 1u);
    }
    // Huffman codes go out most significant bit first.
    void code(std::uint32_t value, int count) {
        for (int i = count - 1; i >= 0; --i)
            bit((value >> i) & 1u);
    }
    void flush() {
        if (used_)
            bytes.push_back(current_);
        current_ = 0;
        used_ = 0;
    }

private:
    void bit(std::uint32_t b) {
        current_ = static_cast<std::uint8_t>(current_ | (b << used_));
        if (++used_ == 8)
            flush();
    }
    std::uint8_t current_ = 0;
    int used_ = 0;
};

void literal(BitWriter& out, int symbol) {
    if (symbol < 144)
        out.code(0x30u + static_cast<std::uint32_t>(symbol), 8);
    else if (symbol < 256)
        out.code(0x190u + static_cast<std::uint32_t>(symbol - 144), 9);
    else if (symbol < 280)
        out.code(static_cast<std::uint32_t>(symbol - 256), 7);
    else
        out.code(0xC0u + static_cast<std::uint32_t>(symbol - 280), 8);
}

void match(BitWriter& out, int length, std::size_t distance) {
    int l = 28;
    while (kLengthBase[static_cast<std::size_t>(l)] > length)
        --l;
    literal(out, 257 + l);
    out.bits(static_cast<std::uint32_t>(length - kLengthBase[static_cast<std::size_t>(l)]),
             kLengthExtra[static_cast<std::size_t>(l)]);
    int d = 29;
    while (kDistanceBase[static_cast<std::size_t>(d)] > distance)
        --d;
    out.code(static_cast<std::uint32_t>(d), 5);
    out.bits(static_cast<std::uint32_t>(distance - kDistanceBase[static_cast<std::size_t>(d)]),
             kDistanceExtra[static_cast<std::size_t>(d)]);
}

std::uint32_t crc32(const std::uint8_t* data, std::size_t size, std::uint32_t crc = 0) {
    static const std::array<std::uint32_t, 256> table = [] {
        std::array<std::uint32_t, 256> t{};
        for (std::uint32_t n = 0; n < 256; ++n) {
            std::uint32_t c = n;
            for (int k = 0; k < 8; ++k)
                c = c & 1 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            t[n] = c;
        }
        return t;
    }();
    crc = ~crc;
    for (std::size_t i = 0; i < size; ++i)
        crc = table[(crc ^ data[i]) & 0xFF] ^ (crc >> 8);
    return ~crc;
}

void putBigEndian(std::vector<std::uint8_t>& out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(static_cast<std::uint8_t>(value >> shift));
}

void chunk(std::vector<std::uint8_t>& file, const char* type,
           const std::vector<std::uint8_t>& data) {
    putBigEndian(file, static_cast<std::uint32_t>(data.size()));
    const std::size_t start = file.size();
    file.insert(file.end(), type, type + 4);
    file.insert(file.end(), data.begin(), data.end());
    putBigEndian(file, crc32(&file[start], file.size() - start));
}

int paeth(int a, int b, int c) {
    const int p = a + b - c;
    const int pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
    return pa <= pb && pa <= pc ? a : pb <= pc ? b : c;
}

// The filtered rows: each row's filter byte, then the row filtered by whichever of the five
// filters gives the smallest sum of the bytes read as signed values.
std::vector<std::uint8_t> filterRows(const Image& image) {
    const std::size_t stride = static_cast<std::size_t>(image.width) * 3;
    const auto* raw = reinterpret_cast<const std::uint8_t*>(image.pixels.data());
    std::vector<std::uint8_t> out;
    out.reserve((stride + 1) * static_cast<std::size_t>(image.height));
    std::vector<std::uint8_t> best(stride), trial(stride);
    for (int y = 0; y < image.height; ++y) {
        const std::uint8_t* row = raw + stride * static_cast<std::size_t>(y);
        const std::uint8_t* up = y > 0 ? row - stride : nullptr;
        long bestCost = -1;
        int bestFilter = 0;
        for (int filter = 0; filter < 5; ++filter) {
            long cost = 0;
            for (std::size_t i = 0; i < stride; ++i) {
                const int a = i >= 3 ? row[i - 3] : 0, b = up ? up[i] : 0,
                          c = up && i >= 3 ? up[i - 3] : 0;
                const int predicted = filter == 1   ? a
                                      : filter == 2 ? b
                                      : filter == 3 ? (a + b) / 2
                                      : filter == 4 ? paeth(a, b, c)
                                                    : 0;
                trial[i] = static_cast<std::uint8_t>(row[i] - predicted);
                cost += std::abs(static_cast<std::int8_t>(trial[i]));
            }
            if (bestCost < 0 || cost < bestCost) {
                bestCost = cost;
                bestFilter = filter;
                best.swap(trial);
            }
        }
        out.push_back(static_cast<std::uint8_t>(bestFilter));
        out.insert(out.end(), best.begin(), best.end());
    }
    return out;
}

} // namespace

std::vector<std::uint8_t> deflateFixed(const std::vector<std::uint8_t>& data) {
    BitWriter out;
    out.bytes = {0x78, 0x01}; // deflate, 32 KiB window, no dictionary
    out.bits(1, 1);           // the one and last block
    out.bits(1, 2);           // fixed codes
    std::vector<std::int32_t> head(std::size_t{1} << kHashBits, -1);
    std::vector<std::int32_t> previous(data.size(), -1);
    auto hash = [&](std::size_t i) {
        const std::uint32_t v = static_cast<std::uint32_t>(data[i]) << 16 |
                                static_cast<std::uint32_t>(data[i + 1]) << 8 | data[i + 2];
        return (v * 2654435761u) >> (32 - kHashBits);
    };
    auto insert = [&](std::size_t i) {
        if (i + kMinMatch > data.size())
            return;
        const std::uint32_t h = hash(i);
        previous[i] = head[h];
        head[h] = static_cast<std::int32_t>(i);
    };
    std::size_t i = 0;
    while (i < data.size()) {
        int bestLength = 0;
        std::size_t bestDistance = 0;
        if (i + kMinMatch <= data.size()) {
            const std::size_t limit = std::min<std::size_t>(kMaxMatch, data.size() - i);
            std::int32_t candidate = head[hash(i)];
            for (int step = 0; step < kChainSteps && candidate >= 0; ++step) {
                const auto c = static_cast<std::size_t>(candidate);
                if (i - c > kWindow)
                    break;
                std::size_t length = 0;
                while (length < limit && data[c + length] == data[i + length])
                    ++length;
                if (static_cast<int>(length) > bestLength) {
                    bestLength = static_cast<int>(length);
                    bestDistance = i - c;
                }
                candidate = previous[c];
            }
        }
        if (bestLength >= kMinMatch) {
            match(out, bestLength, bestDistance);
            for (int k = 0; k < bestLength; ++k)
                insert(i + static_cast<std::size_t>(k));
            i += static_cast<std::size_t>(bestLength);
        } else {
            literal(out, data[i]);
            insert(i);
            ++i;
        }
    }
    literal(out, 256);
    out.flush();
    std::uint32_t a = 1, b = 0; // Adler-32 of the uncompressed data
    for (std::uint8_t byte : data) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    putBigEndian(out.bytes, b << 16 | a);
    return out.bytes;
}

bool Image::savePng(const std::string& path) const {
    if (width <= 0 || height <= 0 || pixels.size() != static_cast<std::size_t>(width) * height)
        return false;
    std::vector<std::uint8_t> file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<std::uint8_t> header;
    putBigEndian(header, static_cast<std::uint32_t>(width));
    putBigEndian(header, static_cast<std::uint32_t>(height));
    header.insert(header.end(), {8, 2, 0, 0, 0}); // 8-bit RGB, not interlaced
    chunk(file, "IHDR", header);
    chunk(file, "IDAT", deflateFixed(filterRows(*this)));
    chunk(file, "IEND", {});
    std::FILE* out = std::fopen(path.c_str(), "wb");
    if (!out)
        return false;
    const bool written = std::fwrite(file.data(), 1, file.size(), out) == file.size();
    return std::fclose(out) == 0 && written;
}

bool Image::savePpm(const std::string& path) const {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        return false;
    std::fprintf(file, "P6\n%d %d\n255\n", width, height);
    const bool written =
        std::fwrite(pixels.data(), sizeof(Rgb), pixels.size(), file) == pixels.size();
    return std::fclose(file) == 0 && written;
}

bool Image::loadPpm(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file)
        return false;
    int maxValue = 0;
    bool ok = std::fscanf(file, "P6 %d %d %d", &width, &height, &maxValue) == 3 &&
              maxValue == 255 && width > 0 && height > 0 && width <= 16384 && height <= 16384 &&
              std::fgetc(file) == '\n';
    if (ok) {
        pixels.resize(static_cast<std::size_t>(width) * height);
        ok = std::fread(pixels.data(), sizeof(Rgb), pixels.size(), file) == pixels.size();
    }
    std::fclose(file);
    return ok;
}

} // namespace norvgl::host
