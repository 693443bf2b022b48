// Picture file writers for tests and tools: bitmaps, our RLE encoder, 3DF files, glyph fonts.
#include "picture_assets.h"

#include <algorithm>
#include <cstdio>

namespace norvgl::assets {

namespace {

void put16(std::vector<std::uint8_t>& out, std::uint32_t value) {
    out.push_back(static_cast<std::uint8_t>(value));
    out.push_back(static_cast<std::uint8_t>(value >> 8));
}

void put32(std::vector<std::uint8_t>& out, std::uint32_t value) {
    put16(out, value & 0xFFFF);
    put16(out, value >> 16);
}

void padRow(std::vector<std::uint8_t>& out, std::size_t rowStart) {
    while ((out.size() - rowStart) % 4 != 0) {
        out.push_back(0);
    }
}

std::uint8_t channel(std::uint32_t color, int shift) {
    return static_cast<std::uint8_t>(color >> shift);
}

} // namespace

std::vector<std::uint8_t> assembleBitmap(const BitmapFields& fields,
                                         const std::vector<std::uint32_t>& palette,
                                         const std::vector<std::uint8_t>& bits) {
    const std::uint32_t offset =
        static_cast<std::uint32_t>(14 + fields.headerSize + 4 * palette.size());
    const auto realSize = static_cast<std::uint32_t>(offset + bits.size());
    std::vector<std::uint8_t> out;
    out.reserve(realSize);
    out.push_back('B');
    out.push_back('M');
    put32(out, fields.fileSize != 0 ? fields.fileSize : realSize);
    put32(out, 0);
    put32(out, offset);
    const std::size_t headerStart = out.size();
    put32(out, fields.headerSize);
    put32(out, static_cast<std::uint32_t>(fields.width));
    put32(out, static_cast<std::uint32_t>(fields.height));
    put16(out, fields.planes);
    put16(out, fields.bits);
    put32(out, fields.compression);
    put32(out, fields.imageSize != 0 ? fields.imageSize : static_cast<std::uint32_t>(bits.size()));
    put32(out, 2835); // 72 dots per inch
    put32(out, 2835);
    put32(out, fields.colorsUsed);
    put32(out, 0);
    // A header size below 40 cuts the header short; above 40 pads it.
    out.resize(headerStart + fields.headerSize, 0);
    for (std::uint32_t color : palette) {
        put32(out, color);
    }
    out.insert(out.end(), bits.begin(), bits.end());
    return out;
}

std::vector<std::uint8_t> packIndexRows(const IndexedImage& image, int bits, bool topDown) {
    std::vector<std::uint8_t> out;
    for (std::int32_t r = 0; r < image.height; ++r) {
        const std::int32_t y = topDown ? r : image.height - 1 - r;
        const std::size_t start = out.size();
        for (std::int32_t x = 0; x < image.width; ++x) {
            const std::uint8_t index = image.at(x, y);
            if (bits == 8) {
                out.push_back(index);
            } else if (x % 2 == 0) {
                out.push_back(static_cast<std::uint8_t>(index << 4));
            } else {
                out.back() = static_cast<std::uint8_t>(out.back() | (index & 15));
            }
        }
        padRow(out, start);
    }
    return out;
}

std::vector<std::uint8_t> packColorRows(const RgbImage& image, int bits, bool topDown) {
    std::vector<std::uint8_t> out;
    for (std::int32_t r = 0; r < image.height; ++r) {
        const std::int32_t y = topDown ? r : image.height - 1 - r;
        const std::size_t start = out.size();
        for (std::int32_t x = 0; x < image.width; ++x) {
            const std::uint32_t c = image.at(x, y);
            if (bits == 16) {
                put16(out,
                      (channel(c, 16) >> 3) << 10 | (channel(c, 8) >> 3) << 5 | channel(c, 0) >> 3);
            } else {
                out.push_back(channel(c, 0));
                out.push_back(channel(c, 8));
                out.push_back(channel(c, 16));
                if (bits == 32) {
                    out.push_back(0);
                }
            }
        }
        padRow(out, start);
    }
    return out;
}

void RleWriter::run(std::uint8_t count, std::uint8_t value) {
    bytes_.push_back(count);
    bytes_.push_back(value);
}

void RleWriter::absolute(const std::vector<std::uint8_t>& indices) {
    bytes_.push_back(0);
    bytes_.push_back(static_cast<std::uint8_t>(indices.size()));
    const std::size_t start = bytes_.size();
    for (std::size_t k = 0; k < indices.size(); ++k) {
        if (!fourBit_) {
            bytes_.push_back(indices[k]);
        } else if (k % 2 == 0) {
            bytes_.push_back(static_cast<std::uint8_t>(indices[k] << 4));
        } else {
            bytes_.back() = static_cast<std::uint8_t>(bytes_.back() | (indices[k] & 15));
        }
    }
    if ((bytes_.size() - start) % 2 != 0) {
        bytes_.push_back(0);
    }
}

void RleWriter::endOfLine() {
    run(0, 0);
}

void RleWriter::delta(std::uint8_t right, std::uint8_t up) {
    run(0, 2);
    bytes_.push_back(right);
    bytes_.push_back(up);
}

void RleWriter::endOfBitmap() {
    run(0, 1);
}

std::vector<std::uint8_t> encodeRle(const IndexedImage& image, bool fourBit) {
    RleWriter writer(fourBit);
    const auto width = static_cast<std::size_t>(image.width);
    for (std::int32_t y = image.height - 1; y >= 0; --y) {
        const std::uint8_t* row = &image.pixels[static_cast<std::size_t>(y) * width];
        std::size_t x = 0;
        while (x < width) {
            // A stretch of at least 3 equal indices becomes a run.
            std::size_t same = 1;
            while (x + same < width && same < 255 && row[x + same] == row[x]) {
                ++same;
            }
            if (same >= 3 || width - x < 3) {
                const std::size_t count = same >= 3 ? same : 1;
                const std::uint8_t index = row[x];
                writer.run(static_cast<std::uint8_t>(count),
                           fourBit ? static_cast<std::uint8_t>(index << 4 | (index & 15)) : index);
                x += count;
                continue;
            }
            // Otherwise gather indices up to the next stretch of 3 equal ones, at least 3
            // and at most 254 (a count of 255 is avoided: some decoders misread its padding).
            std::size_t end = x;
            while (end < width && end - x < 254) {
                if (end + 2 < width && row[end] == row[end + 1] && row[end] == row[end + 2]) {
                    break;
                }
                ++end;
            }
            if (end - x < 3) {
                end = std::min(width, x + 3);
            }
            writer.absolute(std::vector<std::uint8_t>(row + x, row + end));
            x = end;
        }
        if (y > 0) {
            writer.endOfLine();
        }
    }
    writer.endOfBitmap();
    return writer.bytes();
}

std::vector<std::uint8_t> writeIndexedBitmap(const IndexedImage& image,
                                             const std::vector<std::uint32_t>& palette, int bits,
                                             std::uint32_t compression, bool topDown,
                                             std::uint32_t colorsUsed) {
    BitmapFields fields;
    fields.width = image.width;
    fields.height = topDown && compression == 0 ? -image.height : image.height;
    fields.bits = static_cast<std::uint16_t>(bits);
    fields.compression = compression;
    fields.colorsUsed = colorsUsed;
    std::vector<std::uint32_t> entries = palette;
    entries.resize(colorsUsed != 0 ? colorsUsed : std::size_t{1} << bits, 0);
    const std::vector<std::uint8_t> data =
        compression == 0 ? packIndexRows(image, bits, topDown) : encodeRle(image, compression == 2);
    return assembleBitmap(fields, entries, data);
}

std::vector<std::uint8_t> writeColorBitmap(const RgbImage& image, int bits, bool topDown) {
    BitmapFields fields;
    fields.width = image.width;
    fields.height = topDown ? -image.height : image.height;
    fields.bits = static_cast<std::uint16_t>(bits);
    return assembleBitmap(fields, {}, packColorRows(image, bits, topDown));
}

std::uint16_t packRgb565(std::uint32_t color) {
    return static_cast<std::uint16_t>((channel(color, 16) >> 3) << 11 |
                                      (channel(color, 8) >> 2) << 5 | channel(color, 0) >> 3);
}

std::uint16_t packArgb8332(std::uint32_t color, std::uint8_t alpha) {
    // Nearest of the 8 (or 4) steps that the texel conversion produces.
    const auto step = [](std::uint32_t value, std::uint32_t unit, std::uint32_t max) {
        return std::min(max, (value + unit / 2) / unit);
    };
    return static_cast<std::uint16_t>(alpha << 8 | step(channel(color, 16), 36, 7) << 5 |
                                      step(channel(color, 8), 36, 7) << 2 |
                                      step(channel(color, 0), 85, 3));
}

std::string tdfHeader(bool rgb565, std::int32_t small, std::int32_t large, std::int32_t a1,
                      std::int32_t a2) {
    char text[160];
    std::snprintf(text, sizeof text, "3df v1.1\n%s\nlod range: %d %d\naspect ratio: %d %d\n",
                  rgb565 ? "rgb565" : "argb8332", small, large, a1, a2);
    return text;
}

std::vector<std::uint8_t> writeTdf(bool rgb565, std::int32_t small, std::int32_t large,
                                   std::int32_t a1, std::int32_t a2,
                                   const std::vector<std::vector<std::uint16_t>>& levels) {
    const std::string header = tdfHeader(rgb565, small, large, a1, a2);
    std::vector<std::uint8_t> out(header.begin(), header.end());
    for (const auto& level : levels) {
        for (std::uint16_t texel : level) {
            out.push_back(static_cast<std::uint8_t>(texel >> 8));
            out.push_back(static_cast<std::uint8_t>(texel));
        }
    }
    return out;
}

std::vector<std::uint8_t> writeTdfFromImage(const RgbImage& image, bool rgb565,
                                            std::int32_t levels) {
    const std::int32_t large = std::max(image.width, image.height);
    const std::int32_t a1 = image.width >= image.height ? image.width / image.height : 1;
    const std::int32_t a2 = image.width >= image.height ? 1 : image.height / image.width;
    const std::int32_t small = std::max(1, large >> levels);
    std::vector<std::vector<std::uint16_t>> texels;
    RgbImage level = image;
    for (std::int32_t i = 0; i < levels; ++i) {
        std::vector<std::uint16_t> packed;
        for (std::uint32_t c : level.pixels) {
            packed.push_back(rgb565 ? packRgb565(c) : packArgb8332(c));
        }
        texels.push_back(std::move(packed));
        RgbImage half;
        half.width = std::max(1, level.width / 2);
        half.height = std::max(1, level.height / 2);
        for (std::int32_t y = 0; y < half.height; ++y) {
            for (std::int32_t x = 0; x < half.width; ++x) {
                std::uint32_t sum[3] = {0, 0, 0};
                for (int k = 0; k < 4; ++k) {
                    const std::int32_t sx = std::min(level.width - 1, 2 * x + k % 2);
                    const std::int32_t sy = std::min(level.height - 1, 2 * y + k / 2);
                    const std::uint32_t c = level.at(sx, sy);
                    sum[0] += channel(c, 16);
                    sum[1] += channel(c, 8);
                    sum[2] += channel(c, 0);
                }
                half.pixels.push_back(rgb(sum[0] / 4, sum[1] / 4, sum[2] / 4));
            }
        }
        level = std::move(half);
    }
    return writeTdf(rgb565, small, large, a1, a2, texels);
}

std::uint32_t glyphColor(std::uint8_t code) {
    return rgb(code, 255u - code, 0x80);
}

RgbImage makeGlyphFont(std::int32_t cell) {
    RgbImage font;
    font.width = font.height = 16 * cell;
    font.pixels.assign(static_cast<std::size_t>(font.width) * font.height, 0);
    for (std::int32_t y = 0; y < font.height; ++y) {
        for (std::int32_t x = 0; x < font.width; ++x) {
            const std::int32_t cx = x % cell;
            const std::int32_t cy = y % cell;
            if (cx == 0 || cy == 0 || cx == cell - 1 || cy == cell - 1) {
                continue;
            }
            const auto code = static_cast<std::uint8_t>(16 * (y / cell) + x / cell);
            font.pixels[static_cast<std::size_t>(y) * font.width + x] = glyphColor(code);
        }
    }
    return font;
}

bool writeFile(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        return false;
    }
    const bool ok = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && ok;
}

bool readFile(const std::string& path, std::vector<std::uint8_t>& bytes) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        return false;
    }
    bytes.clear();
    std::uint8_t buffer[65536];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0) {
        bytes.insert(bytes.end(), buffer, buffer + n);
    }
    const bool ok = std::ferror(file) == 0;
    std::fclose(file);
    return ok;
}

std::string readText(const std::string& path) {
    std::vector<std::uint8_t> bytes;
    if (!readFile(path, bytes))
        return {};
    return std::string(bytes.begin(), bytes.end());
}

} // namespace norvgl::assets
