#include "support/H264Reader.hpp"

#include <stdexcept>

namespace KeloServiceTest {
namespace {

void require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

class BitReader {
public:
    explicit BitReader(std::string_view bytes)
        : bytes_(bytes) {}

    unsigned bits(int width) {
        unsigned value = 0;
        for (int i = 0; i < width; ++i) {
            require(place_ < bytes_.size() * 8, "a NAL unit ends too early");
            const auto byte = static_cast<unsigned char>(bytes_[place_ / 8]);
            value = value << 1 | (byte >> (7 - place_ % 8) & 1U);
            ++place_;
        }
        return value;
    }
    unsigned code() {
        int zeros = 0;
        while (bits(1) == 0) {
            require(++zeros < 32, "a number is too long");
        }
        return (1U << zeros) - 1 + bits(zeros);
    }
    void expectCode(unsigned value, const char* what) { require(code() == value, what); }
    void align() {
        while (place_ % 8 != 0) {
            require(bits(1) == 0, "alignment bits are not zero");
        }
    }
    std::string_view bytes(std::size_t count) {
        require(place_ % 8 == 0 && place_ / 8 + count <= bytes_.size(), "samples are missing");
        const std::string_view taken = bytes_.substr(place_ / 8, count);
        place_ += count * 8;
        return taken;
    }
    /// Whether there is more than the trailing bits.
    bool hasMore() const {
        BitReader rest = *this;
        if (rest.bits(1) == 0) {
            return true;
        }
        while (rest.place_ < bytes_.size() * 8) {
            if (rest.bits(1) == 1) {
                return true;
            }
        }
        return false;
    }

private:
    std::string_view bytes_;
    std::size_t place_ = 0;
};

void readSquare(BitReader& reader, std::string& plane, int stride, int side, int x, int y) {
    for (int row = 0; row < side; ++row) {
        const auto place =
            static_cast<std::size_t>(y * side + row) * static_cast<std::size_t>(stride) +
            static_cast<std::size_t>(x * side);
        const auto count = static_cast<std::size_t>(side);
        plane.replace(place, count, reader.bytes(count));
    }
}

} // namespace

std::string unescape(std::string_view unit) {
    std::string payload;
    int zeros = 0;
    for (const char byte : unit.substr(1)) {
        if (zeros == 2) {
            require(byte != 0 && byte != 1 && byte != 2, "a start code inside a NAL unit");
            zeros = 0;
            if (byte == 3) {
                continue;
            }
        }
        payload += byte;
        zeros = byte == 0 ? zeros + 1 : 0;
    }
    return payload;
}

VideoShape readSequenceParameters(std::string_view unit) {
    require((unit.at(0) & 0x1F) == 7, "no sequence parameters");
    const std::string payload = unescape(unit);
    BitReader reader(payload);
    VideoShape shape;
    shape.profile = static_cast<int>(reader.bits(8));
    reader.bits(8);
    shape.level = static_cast<int>(reader.bits(8));
    reader.expectCode(0, "seq_parameter_set_id");
    reader.expectCode(4, "log2_max_frame_num_minus4");
    reader.expectCode(2, "pic_order_cnt_type");
    reader.expectCode(1, "max_num_ref_frames");
    require(reader.bits(1) == 0, "gaps_in_frame_num_value_allowed_flag");
    shape.blocksAcross = static_cast<int>(reader.code()) + 1;
    shape.blocksDown = static_cast<int>(reader.code()) + 1;
    require(reader.bits(4) == 0b1100, "frame_mbs_only_flag and the flags behind it");
    require(!reader.hasMore(), "sequence parameters go on");
    return shape;
}

H264Reader::H264Reader(const VideoShape& shape)
    : blocks_(shape.blocksAcross)
    , picture_(shape.blocksAcross * 16) {
    require(shape.blocksAcross == shape.blocksDown, "the picture is not square");
}

const KeloService::Picture& H264Reader::read(std::string_view unit) {
    const int kind = unit.at(0) & 0x1F;
    require(kind == 5 || kind == 1, "no frame");
    const bool isKeyFrame = kind == 5;
    const std::string payload = unescape(unit);
    BitReader reader(payload);
    reader.expectCode(0, "first_mb_in_slice");
    reader.expectCode(isKeyFrame ? 7 : 5, "slice_type");
    reader.expectCode(0, "pic_parameter_set_id");
    frame_ = isKeyFrame ? 0 : (frame_ + 1) % 256;
    require(reader.bits(8) == frame_, "frame_num");
    if (isKeyFrame) {
        reader.code();
    }
    require(reader.bits(isKeyFrame ? 2 : 3) == 0, "the flags of the slice header");
    reader.expectCode(0, "slice_qp_delta");
    reader.expectCode(1, "disable_deblocking_filter_idc");
    int block = 0;
    while (reader.hasMore()) {
        if (!isKeyFrame) {
            block += static_cast<int>(reader.code());
            if (!reader.hasMore()) {
                break;
            }
        }
        reader.expectCode(isKeyFrame ? 25 : 30, "mb_type");
        reader.align();
        const int x = block % blocks_;
        const int y = block / blocks_;
        require(y < blocks_, "more macroblocks than the picture has");
        readSquare(reader, picture_.luma, picture_.side, 16, x, y);
        readSquare(reader, picture_.blue, picture_.side / 2, 8, x, y);
        readSquare(reader, picture_.red, picture_.side / 2, 8, x, y);
        ++block;
    }
    require(block == blocks_ * blocks_, "fewer macroblocks than the picture has");
    return picture_;
}

} // namespace KeloServiceTest
