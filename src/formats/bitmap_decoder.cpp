// Windows bitmaps: header checks, palette and RLE decoding, and the stretch into 32-bit
// pixels. Every read is checked against the file size field, which is itself checked
// against the length of the data.
#include "formats/bitmap_decoder.h"

#include <cstring>
#include <memory>
#include <new>

namespace norvgl {

namespace {

std::uint16_t read16(const std::uint8_t* p) {
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

std::uint32_t read32(const std::uint8_t* p) {
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

template <typename T> std::unique_ptr<T[]> allocate(std::uint64_t count) {
    return std::unique_ptr<T[]>(new (std::nothrow) T[static_cast<std::size_t>(count)]());
}

// Bytes of one stored row: rows are padded to whole 32-bit words.
std::uint64_t rowStride(std::uint32_t width, std::uint32_t bits) {
    return (static_cast<std::uint64_t>(width) * bits + 31) / 32 * 4;
}

// The source image as 32-bit pixels (red << 16 | green << 8 | blue), fetched a row at a time,
// rows counted from the top.
class SourceImage {
public:
    SourceImage(const std::uint8_t* file, const BitmapInfo& info)
        : file_(file), info_(info), width_(static_cast<std::uint32_t>(info.width)),
          height_(info.absHeight) {}

    BitmapResult prepare();
    // Row `y` from the top, width() pixels.
    const std::uint32_t* row(std::uint32_t y);
    std::uint32_t width() const { return width_; }
    std::uint32_t height() const { return height_; }
    bool isRle() const { return indices_ != nullptr; }
    // For RLE bitmaps: whether the pixel lies in a run that the stream finished with an
    // escape code (only such pixels are drawn when the image is not stretched).
    bool covered(std::uint32_t x, std::uint32_t y) const {
        return covered_[static_cast<std::size_t>(y) * width_ + x] != 0;
    }

private:
    void decodeRle(const std::uint8_t* stream, std::uint32_t length);
    void setIndex(std::uint32_t x, std::uint32_t y, std::uint8_t index) {
        indices_[static_cast<std::size_t>(y) * width_ + x] = index;
    }

    const std::uint8_t* file_;
    const BitmapInfo& info_;
    std::uint32_t width_;
    std::uint32_t height_;
    std::uint32_t palette_[256] = {};
    const std::uint8_t* bits_ = nullptr;
    std::uint64_t stride_ = 0;
    std::unique_ptr<std::uint8_t[]> indices_; // RLE: one palette index a pixel, top row first
    std::unique_ptr<std::uint8_t[]> covered_;
    std::unique_ptr<std::uint32_t[]> row_;
    std::uint32_t rowIndex_ = 0xFFFFFFFFu;
};

BitmapResult SourceImage::prepare() {
    const std::uint32_t bits = info_.bitsPerPixel;
    if (bits != 4 && bits != 8 && bits != 24) {
        return BitmapResult::UnsupportedBits;
    }
    const std::uint32_t compression = info_.compression;
    const bool rle = compression == kBitmapRle8 || compression == kBitmapRle4;
    if (rle) {
        if (info_.topDown || bits != (compression == kBitmapRle4 ? 4u : 8u)) {
            return BitmapResult::UnsupportedCompression;
        }
        if (info_.imageSize == 0) {
            return BitmapResult::MissingImageSize;
        }
    } else if (compression != kBitmapRgb) {
        return BitmapResult::UnsupportedCompression;
    } else if (info_.planes == 0) {
        return BitmapResult::BadPlanes;
    }
    if (static_cast<std::uint64_t>(width_) * height_ > kBitmapMaxPixels) {
        return BitmapResult::TooLarge;
    }
    if (info_.bitsOffset > info_.fileSize) {
        return BitmapResult::PaletteTruncated;
    }
    const std::uint64_t available = info_.fileSize - info_.bitsOffset;
    bits_ = file_ + info_.bitsOffset;

    // Entries past the palette's end, up to the depth's full count, are black.
    if (bits <= 8) {
        const std::uint64_t full = std::uint64_t{1} << bits;
        const std::uint64_t count = info_.paletteColors < full ? info_.paletteColors : full;
        const std::uint8_t* entry = file_ + info_.paletteOffset;
        for (std::uint64_t i = 0; i < count; ++i, entry += 4) {
            palette_[i] = static_cast<std::uint32_t>(entry[2]) << 16 |
                          static_cast<std::uint32_t>(entry[1]) << 8 | entry[0];
        }
    }

    row_ = allocate<std::uint32_t>(width_);
    if (!row_) {
        return BitmapResult::OutOfMemory;
    }
    if (rle) {
        if (info_.imageSize > available) {
            return BitmapResult::PixelsTruncated;
        }
        const std::uint64_t pixels = static_cast<std::uint64_t>(width_) * height_;
        indices_ = allocate<std::uint8_t>(pixels);
        covered_ = allocate<std::uint8_t>(pixels);
        if (!indices_ || !covered_) {
            return BitmapResult::OutOfMemory;
        }
        decodeRle(bits_, info_.imageSize);
        return BitmapResult::Ok;
    }
    stride_ = rowStride(width_, bits);
    if (stride_ * height_ > available) {
        return BitmapResult::PixelsTruncated;
    }
    return BitmapResult::Ok;
}

// Runs are clipped at the right edge. A 4-bit run that ends inside a byte also sets the
// pixel that shares that byte, as the system's decoder does; it matters only when the image
// is stretched, because such a pixel is outside the covered runs.
void SourceImage::decodeRle(const std::uint8_t* stream, std::uint32_t length) {
    const bool four = info_.compression == kBitmapRle4;
    const std::uint32_t width = width_;
    std::uint32_t x = 0;
    std::uint32_t left = 0;
    std::uint32_t right = 0;
    std::int64_t y = static_cast<std::int64_t>(height_) - 1; // rows from the top
    std::uint32_t i = 0;

    auto coverRun = [&] {
        if (left != right) {
            std::memset(&covered_[static_cast<std::size_t>(y) * width + left], 1, right - left);
        }
    };

    while (length >= 2 && i < length - 1) {
        const std::uint32_t count = stream[i];
        const std::uint8_t value = stream[i + 1];
        i += 2;
        const auto row = static_cast<std::uint32_t>(y);
        if (count != 0) {
            // Encoded run: one index repeated, or two 4-bit indices alternating.
            const std::uint32_t n = x + count > width ? width - x : count;
            for (std::uint32_t k = 0; k < n; ++k) {
                setIndex(x + k, row,
                         four ? static_cast<std::uint8_t>(k % 2 == 0 ? value >> 4 : value & 15)
                              : value);
            }
            const std::uint32_t end = x + n;
            if (four && n != 0 && end % 2 == 1 && end < width) {
                setIndex(end, row, static_cast<std::uint8_t>(n % 2 == 0 ? value >> 4 : value & 15));
            }
            x = end;
            right = x;
            continue;
        }
        if (value < 3) {
            coverRun();
            if (value == 0) { // end of line
                left = right = x = 0;
                if (--y < 0) {
                    return;
                }
            } else if (value == 1) { // end of bitmap
                return;
            } else { // delta: right, then up
                if (i >= length - 1) {
                    return;
                }
                x += stream[i];
                if (x > width) {
                    x = width;
                }
                left = right = x;
                y -= stream[i + 1];
                if (y < 0) {
                    return;
                }
                i += 2;
            }
            continue;
        }
        // Absolute run of `value` indices, padded to a 16-bit boundary.
        const std::uint32_t bytes = four ? (value * 4u + 7) / 8 : value;
        if (bytes > length - i) {
            return;
        }
        const std::uint32_t n = x + value > width ? width - x : value;
        const std::uint8_t* data = stream + i;
        for (std::uint32_t k = 0; k < n; ++k) {
            setIndex(
                x + k, row,
                four ? static_cast<std::uint8_t>(k % 2 == 0 ? data[k / 2] >> 4 : data[k / 2] & 15)
                     : data[k]);
        }
        const std::uint32_t end = x + n;
        if (four && n != 0 && end % 2 == 1 && end < width) {
            // An even start copies whole bytes, so the next nibble comes along; an odd start
            // writes byte by byte and clears it.
            setIndex(end, row,
                     x % 2 == 0 ? static_cast<std::uint8_t>(data[n / 2] & 15) : std::uint8_t{0});
        }
        x = end;
        right = x;
        i += (bytes + 1) & ~1u;
    }
}

const std::uint32_t* SourceImage::row(std::uint32_t y) {
    if (y == rowIndex_) {
        return row_.get();
    }
    rowIndex_ = y;
    std::uint32_t* out = row_.get();
    if (indices_) {
        const std::uint8_t* in = &indices_[static_cast<std::size_t>(y) * width_];
        for (std::uint32_t x = 0; x < width_; ++x) {
            out[x] = palette_[in[x]];
        }
        return out;
    }
    const std::uint32_t stored = info_.topDown ? y : height_ - 1 - y;
    const std::uint8_t* in = bits_ + stored * stride_;
    switch (info_.bitsPerPixel) {
    case 4:
        for (std::uint32_t x = 0; x < width_; ++x) {
            const std::uint8_t byte = in[x / 2];
            out[x] = palette_[x % 2 == 0 ? byte >> 4 : byte & 15];
        }
        break;
    case 8:
        for (std::uint32_t x = 0; x < width_; ++x) {
            out[x] = palette_[in[x]];
        }
        break;
    default:
        for (std::uint32_t x = 0; x < width_; ++x, in += 3) {
            out[x] = static_cast<std::uint32_t>(in[2]) << 16 |
                     static_cast<std::uint32_t>(in[1]) << 8 | in[0];
        }
        break;
    }
    return out;
}

// One axis of the stretch: a Bresenham walk over the longer of the two lengths, starting
// with an error term that puts the first step between the first two pixel centres.
struct AxisSteps {
    bool enlarge; // target at least as long as the source: walk the target
    std::int64_t steps;
    std::int64_t error;
    std::int64_t addStep; // when the shorter side advances
    std::int64_t addStay; // when it does not
};

AxisSteps axisSteps(std::uint32_t source, std::uint32_t target) {
    const std::int64_t s = source;
    const std::int64_t t = target;
    if (t >= s) {
        return {true, t, 3 * s - 2 * t, 2 * s - 2 * t, 2 * s};
    }
    return {false, s, 3 * t - 2 * s, 2 * t - 2 * s, 2 * t};
}

// Draws one source row into one target row. When enlarging, target pixels repeat source
// pixels; when shrinking, the source pixels that fall together are ANDed. `keep` ANDs into
// what the target row holds instead of starting afresh.
void stretchRow(const std::uint32_t* source, std::uint32_t* target, const AxisSteps& axis,
                std::uint32_t targetWidth, bool keep) {
    std::int64_t error = axis.error;
    std::uint32_t s = 0;
    std::uint32_t t = 0;
    if (axis.enlarge) {
        for (std::int64_t n = 0; n < axis.steps; ++n) {
            target[t] = keep ? target[t] & source[s] : source[s];
            ++t;
            if (error > 0) {
                ++s;
                error += axis.addStep;
            } else {
                error += axis.addStay;
            }
        }
        return;
    }
    bool fresh = true;
    for (std::int64_t n = 0; n < axis.steps && t < targetWidth; ++n) {
        if (fresh && !keep) {
            target[t] = 0xFFFFFFFFu;
        }
        target[t] &= source[s];
        fresh = false;
        ++s;
        if (error > 0) {
            ++t;
            fresh = true;
            error += axis.addStep;
        } else {
            error += axis.addStay;
        }
    }
}

} // namespace

BitmapResult parseBitmap(const std::uint8_t* data, std::size_t size, BitmapInfo& info) {
    if (data == nullptr || size < 2 || data[0] != 'B' || data[1] != 'M') {
        return BitmapResult::NotBitmap;
    }
    if (size < 6) {
        return BitmapResult::Truncated;
    }
    const std::uint32_t fileSize = read32(data + 2);
    if (fileSize < kBitmapMinFileSize) {
        return BitmapResult::FileTooSmall;
    }
    if (size < fileSize) {
        return BitmapResult::Truncated;
    }
    const std::uint8_t* header = data + kBitmapFileHeaderSize;
    const std::uint32_t headerSize = read32(header);
    if (headerSize < kBitmapInfoHeaderSize) {
        return BitmapResult::HeaderTooSmall;
    }
    if (kBitmapFileHeaderSize + static_cast<std::uint64_t>(headerSize) > fileSize) {
        return BitmapResult::HeaderTooLarge;
    }
    const auto width = static_cast<std::int32_t>(read32(header + 4));
    const auto height = static_cast<std::int32_t>(read32(header + 8));
    if (width <= 0) {
        return BitmapResult::BadWidth;
    }
    if (height == 0) {
        return BitmapResult::BadHeight;
    }
    BitmapInfo facts;
    facts.fileSize = fileSize;
    facts.headerSize = headerSize;
    facts.width = width;
    facts.height = height;
    facts.topDown = height < 0;
    facts.absHeight = facts.topDown ? 0u - static_cast<std::uint32_t>(height)
                                    : static_cast<std::uint32_t>(height);
    facts.planes = read16(header + 12);
    facts.bitsPerPixel = read16(header + 14);
    facts.compression = read32(header + 16);
    facts.imageSize = read32(header + 20);
    facts.colorsUsed = read32(header + 32);
    if (facts.colorsUsed != 0) {
        facts.paletteColors = facts.colorsUsed;
    } else if (facts.bitsPerPixel < 24) {
        facts.paletteColors = std::uint64_t{1} << facts.bitsPerPixel;
    }
    facts.paletteOffset = kBitmapFileHeaderSize + static_cast<std::uint64_t>(headerSize);
    facts.bitsOffset = facts.paletteOffset + 4 * facts.paletteColors;
    info = facts;
    return BitmapResult::Ok;
}

BitmapResult stretchBitmap(const std::uint8_t* data, std::size_t size, const BitmapInfo& info,
                           std::int32_t targetWidth, std::int32_t targetHeight, std::uint8_t* out) {
    if (data == nullptr || info.fileSize > size || info.width <= 0 || info.absHeight == 0 ||
        info.paletteOffset != kBitmapFileHeaderSize + static_cast<std::uint64_t>(info.headerSize) ||
        info.bitsOffset != info.paletteOffset + 4 * info.paletteColors ||
        info.paletteOffset > info.fileSize) {
        return BitmapResult::Truncated;
    }
    if (targetWidth <= 0 || targetHeight <= 0 || out == nullptr) {
        return BitmapResult::BadTarget;
    }
    const auto tw = static_cast<std::uint32_t>(targetWidth);
    const auto th = static_cast<std::uint32_t>(targetHeight);
    if (static_cast<std::uint64_t>(tw) * th > kBitmapMaxPixels) {
        return BitmapResult::TooLarge;
    }
    SourceImage source(data, info);
    const BitmapResult prepared = source.prepare();
    if (prepared != BitmapResult::Ok) {
        return prepared;
    }
    const std::uint32_t sw = source.width();
    const std::uint32_t sh = source.height();

    // The target is a bottom-up 32-bit DIB: row y from the top is stored at th - 1 - y.
    auto targetRow = [&](std::uint32_t y) {
        return out + static_cast<std::size_t>(th - 1 - y) * tw * 4;
    };
    auto store = [](std::uint8_t* p, std::uint32_t pixel) {
        p[0] = static_cast<std::uint8_t>(pixel);
        p[1] = static_cast<std::uint8_t>(pixel >> 8);
        p[2] = static_cast<std::uint8_t>(pixel >> 16);
        p[3] = 0;
    };

    if (sw == tw && sh == th) {
        // Same size: a plain copy; RLE draws only its covered runs.
        for (std::uint32_t y = 0; y < th; ++y) {
            const std::uint32_t* in = source.row(y);
            std::uint8_t* row = targetRow(y);
            for (std::uint32_t x = 0; x < tw; ++x) {
                if (!source.isRle() || source.covered(x, y)) {
                    store(row + 4 * x, in[x]);
                }
            }
        }
        return BitmapResult::Ok;
    }

    // Stretch into a scratch image of whole pixels, top row first, then store it.
    auto scratch = allocate<std::uint32_t>(static_cast<std::uint64_t>(tw) * th);
    if (!scratch) {
        return BitmapResult::OutOfMemory;
    }
    const AxisSteps horizontal = axisSteps(sw, tw);
    const AxisSteps vertical = axisSteps(sh, th);
    auto scratchRow = [&](std::uint32_t y) { return &scratch[static_cast<std::size_t>(y) * tw]; };

    std::int64_t error = vertical.error;
    std::uint32_t sy = 0;
    std::uint32_t ty = 0;
    if (vertical.enlarge) {
        // Each target row is drawn from its source row once, then repeated.
        bool needRow = true;
        for (std::int64_t n = 0; n < vertical.steps; ++n, ++ty) {
            if (needRow) {
                stretchRow(source.row(sy), scratchRow(ty), horizontal, tw, false);
                needRow = false;
            } else {
                std::memcpy(scratchRow(ty), scratchRow(ty - 1), tw * sizeof(std::uint32_t));
            }
            if (error > 0) {
                ++sy;
                needRow = true;
                error += vertical.addStep;
            } else {
                error += vertical.addStay;
            }
        }
    } else {
        // Source rows that fall on one target row are ANDed together.
        bool merging = false;
        for (std::int64_t n = 0; n < vertical.steps && ty < th; ++n, ++sy) {
            stretchRow(source.row(sy), scratchRow(ty), horizontal, tw, merging);
            merging = true;
            if (error > 0) {
                ++ty;
                merging = false;
                error += vertical.addStep;
            } else {
                error += vertical.addStay;
            }
        }
    }
    for (std::uint32_t y = 0; y < th; ++y) {
        const std::uint32_t* in = scratchRow(y);
        std::uint8_t* row = targetRow(y);
        for (std::uint32_t x = 0; x < tw; ++x) {
            store(row + 4 * x, in[x]);
        }
    }
    return BitmapResult::Ok;
}

BitmapPlan planBitmap(std::uint32_t width, std::uint32_t height, bool texturesOn) {
    if (!texturesOn || width > kBitmapMaxTextureSide || height > kBitmapMaxTextureSide)
        return {BitmapTarget::PixelArray, width, height};
    auto floorPowerOfTwo = [](std::uint32_t value) {
        std::uint32_t power = 1;
        while (power <= value / 2)
            power *= 2;
        return power;
    };
    const std::uint32_t w2 = floorPowerOfTwo(width);
    const std::uint32_t h2 = floorPowerOfTwo(height);
    if (w2 == h2)
        return {BitmapTarget::Texture, w2, w2};
    if (w2 >= kBitmapMaxTextureSide || h2 >= kBitmapMaxTextureSide)
        return {BitmapTarget::TextureWithoutImage, 0, 0};
    const std::uint32_t side = 2 * (w2 > h2 ? w2 : h2);
    return {BitmapTarget::Texture, side, side};
}

bool bitmapBitsFit(const BitmapInfo& info) {
    if (static_cast<std::uint64_t>(info.width) * info.absHeight > kBitmapMaxPixels)
        return false;
    if (info.bitsOffset > info.fileSize)
        return false;
    if (info.compression != kBitmapRgb)
        return true;
    const std::uint64_t stride =
        (static_cast<std::uint64_t>(info.width) * info.bitsPerPixel + 31) / 32 * 4;
    return stride * info.absHeight <= info.fileSize - info.bitsOffset;
}

} // namespace norvgl
