#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <optional>

// Does not include what it needs itself.
#include <jpeglib.h>

#include "adapters/images/coefficient_arrays.h"
#include "adapters/images/formats.h"
#include "adapters/images/orientation.h"

namespace tavrolin::adapters::images {

namespace {

// A block of 64 pixels takes no less than a bit; the rest is room for sampled colours.
constexpr std::uint64_t kPixelsPerByte = 4096;
// Each scan goes over the whole picture: real files have about ten.
constexpr int kMaximumScans = 100;

std::uint32_t bigEndian16(const std::uint8_t* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) << 8U | bytes[1];
}

// Where the frame header keeps the picture's height; nothing when the header is cut or damaged.
std::optional<std::uint64_t> offsetOfHeight(const ByteSource& bytes) {
    std::optional<std::uint64_t> found;
    visitSegments(bytes, [&](std::uint8_t marker, std::uint64_t offset, std::uint32_t) {
        const bool isFrameHeader =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (isFrameHeader) found = offset + 1;
        return isFrameHeader;
    });
    return found;
}

// The same picture, said to end after its first rows. The library keeps all coefficients of a
// progressive picture in memory; of this one they are few, however large the picture is.
class TopOfPicture : public ByteSource {
public:
    TopOfPicture(const ByteSource& whole, std::uint64_t offsetOfHeight)
        : whole_(whole), offset_(offsetOfHeight) {}

    std::uint64_t size() const override { return whole_.size(); }
    std::size_t read(std::uint64_t offset, std::uint8_t* to, std::size_t count) const override {
        const std::size_t got = whole_.read(offset, to, count);
        const std::array<std::uint8_t, 2> height = {0, kFirstRows};
        for (std::size_t i = 0; i < height.size(); ++i) {
            const std::uint64_t at = offset_ + i;
            if (at >= offset && at < offset + got) to[at - offset] = height[i];
        }
        return got;
    }

private:
    const ByteSource& whole_;
    std::uint64_t offset_;
};

// One pass over a JPEG. The library reports errors by a jump: nothing between `attempt` and the
// library may have a destructor.
class Decompression {
public:
    explicit Decompression(const ByteSource& bytes) : stream_(bytes) {
        info_.err = jpeg_std_error(&errors_);
        errors_.error_exit = [](j_common_ptr info) { std::longjmp(of(info).jump_, 1); };
        errors_.emit_message = [](j_common_ptr, int) {};
        errors_.output_message = [](j_common_ptr) {};
        info_.client_data = this;
        created_ = attempt([this] { jpeg_create_decompress(&info_); });
        if (created_) takeOverArrays();
        source_.init_source = [](j_decompress_ptr) {};
        source_.term_source = [](j_decompress_ptr) {};
        source_.fill_input_buffer = fill;
        source_.skip_input_data = skip;
        source_.resync_to_restart = jpeg_resync_to_restart;
        info_.src = &source_;
        progress_.progress_monitor = [](j_common_ptr info) {
            const auto* decompression = reinterpret_cast<j_decompress_ptr>(info);
            if (decompression->input_scan_number > kMaximumScans) info->err->error_exit(info);
        };
        info_.progress = &progress_;
    }
    ~Decompression() {
        if (created_) jpeg_destroy_decompress(&info_);
    }
    Decompression(const Decompression&) = delete;
    Decompression& operator=(const Decompression&) = delete;

    bool readHeader() {
        return created_ && attempt([this] { jpeg_read_header(&info_, TRUE); });
    }
    std::uint32_t width() const { return info_.image_width; }
    std::uint32_t height() const { return info_.image_height; }
    /// What `start` will make of it: so many eighths of its size each way.
    void setEighths(unsigned eighths) {
        info_.scale_num = eighths;
        info_.scale_denom = 8;
    }
    std::uint32_t outputWidth() const { return info_.output_width; }
    std::uint32_t outputHeight() const { return info_.output_height; }
    /// The bytes ended before the picture did.
    bool ranOut() const { return ranOut_; }

    bool start() {
        isInk_ = info_.jpeg_color_space == JCS_CMYK || info_.jpeg_color_space == JCS_YCCK;
        info_.out_color_space = isInk_ ? JCS_CMYK : JCS_EXT_RGBA;
        return attempt([this] { jpeg_start_decompress(&info_); });
    }
    /// The same for the rows as they stand after the first of several scans; the others are not
    /// read.
    bool startFirstScan() {
        info_.buffered_image = static_cast<boolean>(jpeg_has_multiple_scans(&info_));
        info_.do_block_smoothing = FALSE;
        return start() &&
               (info_.buffered_image == FALSE || attempt([this] { jpeg_start_output(&info_, 1); }));
    }
    /// Into a row of `outputWidth` pixels of 4 bytes.
    bool readRow(std::uint8_t* row) {
        if (!attempt([this, row] {
                JSAMPROW rows[1] = {row};
                jpeg_read_scanlines(&info_, rows, 1);
            }))
            return false;
        if (isInk_) inkToColour(row);
        return true;
    }

private:
    static Decompression& of(j_common_ptr info) {
        return *static_cast<Decompression*>(info->client_data);
    }
    static Decompression& of(j_decompress_ptr info) {
        return of(reinterpret_cast<j_common_ptr>(info));
    }

    template <class Step>
    bool attempt(Step step) {
        if (setjmp(jump_) != 0) return false;
        step();
        return true;
    }

    // In the place of the library's own, which would keep all of them in memory.
    void takeOverArrays() {
        info_.mem->request_virt_barray = [](j_common_ptr info, int, boolean, JDIMENSION width,
                                            JDIMENSION height, JDIMENSION mostRows) {
            CoefficientArray* array = of(info).arrays_.add(width, height, mostRows);
            if (array == nullptr) info->err->error_exit(info);
            return reinterpret_cast<jvirt_barray_ptr>(array);
        };
        makeSampleArrays_ = info_.mem->realize_virt_arrays;
        info_.mem->realize_virt_arrays = [](j_common_ptr info) {
            of(info).makeSampleArrays_(info);
            if (!of(info).arrays_.make()) info->err->error_exit(info);
        };
        info_.mem->access_virt_barray = [](j_common_ptr info, jvirt_barray_ptr array,
                                           JDIMENSION first, JDIMENSION count, boolean willWrite) {
            JBLOCKARRAY rows =
                reinterpret_cast<CoefficientArray*>(array)->rows(first, count, willWrite != FALSE);
            if (rows == nullptr) info->err->error_exit(info);
            return rows;
        };
    }

    static boolean fill(j_decompress_ptr info) {
        static constexpr std::array<JOCTET, 2> kEnd = {0xFF, JPEG_EOI};
        Decompression& self = of(info);
        foundation::Value::Bytes block = self.stream_.next();
        if (block.empty()) {
            self.ranOut_ = true;
            block = kEnd;
        }
        self.source_.next_input_byte = block.data();
        self.source_.bytes_in_buffer = block.size();
        return TRUE;
    }
    static void skip(j_decompress_ptr info, long count) {
        jpeg_source_mgr& source = of(info).source_;
        auto left = static_cast<std::size_t>(std::max(count, 0L));
        while (left > source.bytes_in_buffer && !of(info).ranOut_) {
            left -= source.bytes_in_buffer;
            fill(info);
        }
        left = std::min(left, source.bytes_in_buffer);
        source.next_input_byte += left;
        source.bytes_in_buffer -= left;
    }

    // Files with the marker keep their inks inverted: 255 is a blank sheet.
    void inkToColour(std::uint8_t* row) const {
        const unsigned flip = info_.saw_Adobe_marker != FALSE ? 0 : 255;
        for (std::uint32_t x = 0; x < outputWidth(); ++x, row += 4) {
            const unsigned black = row[3] ^ flip;
            for (int i = 0; i < 3; ++i)
                row[i] = static_cast<std::uint8_t>((row[i] ^ flip) * black / 255);
            row[3] = 255;
        }
    }

    ByteStream stream_;
    CoefficientArrays arrays_;
    void (*makeSampleArrays_)(j_common_ptr) = nullptr;
    jpeg_decompress_struct info_{};
    jpeg_error_mgr errors_{};
    jpeg_source_mgr source_{};
    jpeg_progress_mgr progress_{};
    std::jmp_buf jump_{};
    bool created_ = false;
    bool ranOut_ = false;
    bool isInk_ = false;
};

// The least that is enough: the library skips the work for the rest.
unsigned eighthsFor(PixelSize size, PixelSize wanted) {
    const auto reaches = [](unsigned eighths, std::uint32_t length, std::uint32_t least) {
        return (std::uint64_t{length} * eighths + 7) / 8 >= least;
    };
    unsigned eighths = 1;
    while (eighths < 8 && !(reaches(eighths, size.width, wanted.width) &&
                            reaches(eighths, size.height, wanted.height)))
        ++eighths;
    return eighths;
}

}  // namespace

PixelSize sizeOfJPEG(const ByteSource& bytes) {
    Decompression jpeg(bytes);
    if (!jpeg.readHeader()) return {};
    return Orientation::ofJPEG(bytes).applied(PixelSize{jpeg.width(), jpeg.height()});
}

platform::ImageRef decodeJPEG(const ByteSource& bytes, PixelSize bounds) {
    Decompression jpeg(bytes);
    if (!jpeg.readHeader() ||
        !isReasonable(jpeg.width(), jpeg.height(), bytes.size(), kPixelsPerByte))
        return nullptr;
    const Orientation orientation = Orientation::ofJPEG(bytes);
    const PixelSize size = {jpeg.width(), jpeg.height()};
    const PixelSize fitted = fittedSize(size, orientation.applied(bounds));
    jpeg.setEighths(eighthsFor(size, fitted));
    if (!jpeg.start()) return nullptr;
    Reduction reduction({jpeg.outputWidth(), jpeg.outputHeight()}, fitted);
    std::vector<std::uint8_t> row(std::size_t{jpeg.outputWidth()} * 4);
    for (std::uint32_t y = 0; y < jpeg.outputHeight(); ++y) {
        if (!jpeg.readRow(row.data())) {
            if (y == 0) return nullptr;
            break;
        }
        reduction.addRow(row.data());
    }
    return orientation.applied(reduction.take());
}

bool jpegBegins(const ByteSource& bytes) {
    const std::optional<std::uint64_t> offset = offsetOfHeight(bytes);
    std::array<std::uint8_t, 4> size{};  // height, width
    if (!offset || bytes.read(*offset, size.data(), size.size()) != size.size()) return false;
    const std::uint32_t height = bigEndian16(size.data());
    if (!isReasonable(bigEndian16(&size[2]), height, bytes.size(), kPixelsPerByte)) return false;

    const TopOfPicture top(bytes, *offset);
    Decompression jpeg(height > kFirstRows ? static_cast<const ByteSource&>(top) : bytes);
    if (!jpeg.readHeader() || !jpeg.startFirstScan()) return false;
    std::vector<std::uint8_t> row(std::size_t{jpeg.width()} * 4);
    for (std::uint32_t y = 0; y < jpeg.height(); ++y) {
        if (!jpeg.readRow(row.data())) return false;
    }
    return !jpeg.ranOut();
}

}  // namespace tavrolin::adapters::images
