#include "service/media/H264Writer.hpp"

#include "service/media/BitWriter.hpp"

#include <string_view>

namespace KeloService {
namespace {

constexpr int frameNumberBits = 8;
/// Macroblock type of samples as they are, in a key frame. In other frames it lies 5 higher.
constexpr std::uint32_t samplesType = 25;
constexpr std::uint32_t predictedTypes = 5;

/// First bytes of the NAL units: their importance and kind.
constexpr char sequenceParametersHeader = 0x67;
constexpr char pictureParametersHeader = 0x68;
constexpr char keyFrameHeader = 0x65;
constexpr char nextFrameHeader = 0x41;

/// A NAL unit. Its payload must not contain what looks like a start code: a 3 goes in between.
std::string unit(char header, const std::string& payload) {
    std::string escaped(1, header);
    escaped.reserve(payload.size() + payload.size() / 64 + 1);
    int zeros = 0;
    for (const char byte : payload) {
        if (zeros == 2 && static_cast<unsigned char>(byte) <= 3) {
            escaped += '\3';
            zeros = 0;
        }
        escaped += byte;
        zeros = byte == 0 ? zeros + 1 : 0;
    }
    return escaped;
}

/// A square of one plane. `place` is where it begins, `stride` the length of the plane's rows.
struct Square {
    std::string_view plane;
    std::size_t place;
    std::size_t stride;
    std::size_t side;

    std::string_view row(std::size_t y) const { return plane.substr(place + y * stride, side); }
};

Square square(const std::string& plane, int pictureSide, int blockSide, int x, int y) {
    const auto stride = static_cast<std::size_t>(pictureSide);
    const auto side = static_cast<std::size_t>(blockSide);
    return {plane, (static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(x)) * side,
            stride, side};
}

Square lumaSquare(const Picture& picture, int x, int y) {
    return square(picture.luma, picture.side, H264Writer::blockSide, x, y);
}

Square colourSquare(const Picture& picture, const std::string& plane, int x, int y) {
    return square(plane, picture.side / 2, H264Writer::blockSide / 2, x, y);
}

bool equal(const Square& left, const Square& right) {
    for (std::size_t y = 0; y < left.side; ++y) {
        if (left.row(y) != right.row(y)) {
            return false;
        }
    }
    return true;
}

bool sameBlock(const Picture& left, const Picture& right, int x, int y) {
    return equal(lumaSquare(left, x, y), lumaSquare(right, x, y)) &&
           equal(colourSquare(left, left.blue, x, y), colourSquare(right, right.blue, x, y)) &&
           equal(colourSquare(left, left.red, x, y), colourSquare(right, right.red, x, y));
}

void writeSquare(BitWriter& writer, const Square& square) {
    for (std::size_t y = 0; y < square.side; ++y) {
        writer.bytes(square.row(y));
    }
}

void writeBlock(BitWriter& writer, const Picture& picture, int x, int y) {
    writer.align();
    writeSquare(writer, lumaSquare(picture, x, y));
    writeSquare(writer, colourSquare(picture, picture.blue, x, y));
    writeSquare(writer, colourSquare(picture, picture.red, x, y));
}

} // namespace

H264Writer::H264Writer(int side)
    : blocks_(side / blockSide) {}

std::string H264Writer::sequenceParameters() const {
    BitWriter writer;
    writer.bits(profile, 8);
    writer.bits(compatibility, 8);
    writer.bits(level, 8);
    writer.unsignedCode(0);                   // seq_parameter_set_id
    writer.unsignedCode(frameNumberBits - 4); // log2_max_frame_num_minus4
    writer.unsignedCode(2);                   // pic_order_cnt_type: shown in the order written
    writer.unsignedCode(1);                   // max_num_ref_frames
    writer.flag(false);                       // gaps_in_frame_num_value_allowed_flag
    writer.unsignedCode(static_cast<std::uint32_t>(blocks_ - 1)); // pic_width_in_mbs_minus1
    writer.unsignedCode(static_cast<std::uint32_t>(blocks_ - 1)); // pic_height_in_map_units_minus1
    writer.flag(true);                                            // frame_mbs_only_flag
    writer.flag(true);                                            // direct_8x8_inference_flag
    writer.flag(false);                                           // frame_cropping_flag
    writer.flag(false);                                           // vui_parameters_present_flag
    writer.trail();
    return unit(sequenceParametersHeader, writer.written());
}

std::string H264Writer::pictureParameters() const {
    BitWriter writer;
    writer.unsignedCode(0); // pic_parameter_set_id
    writer.unsignedCode(0); // seq_parameter_set_id
    writer.flag(false);     // entropy_coding_mode_flag: CAVLC
    writer.flag(false);     // bottom_field_pic_order_in_frame_present_flag
    writer.unsignedCode(0); // num_slice_groups_minus1
    writer.unsignedCode(0); // num_ref_idx_l0_default_active_minus1
    writer.unsignedCode(0); // num_ref_idx_l1_default_active_minus1
    writer.flag(false);     // weighted_pred_flag
    writer.bits(0, 2);      // weighted_bipred_idc
    writer.unsignedCode(0); // pic_init_qp_minus26
    writer.unsignedCode(0); // pic_init_qs_minus26
    writer.unsignedCode(0); // chroma_qp_index_offset
    writer.flag(true);      // deblocking_filter_control_present_flag
    writer.flag(false);     // constrained_intra_pred_flag
    writer.flag(false);     // redundant_pic_cnt_present_flag
    writer.trail();
    return unit(pictureParametersHeader, writer.written());
}

std::string H264Writer::keyFrame(const Picture& picture) {
    frame_ = 0;
    BitWriter writer;
    writer.unsignedCode(0);                // first_mb_in_slice
    writer.unsignedCode(7);                // slice_type: I, and so is every slice of the frame
    writer.unsignedCode(0);                // pic_parameter_set_id
    writer.bits(frame_, frameNumberBits);  // frame_num
    writer.unsignedCode(keyFrames_++ % 2); // idr_pic_id: differs between neighbours
    writer.flag(false);                    // no_output_of_prior_pics_flag
    writer.flag(false);                    // long_term_reference_flag
    writer.unsignedCode(0);                // slice_qp_delta
    writer.unsignedCode(1);                // disable_deblocking_filter_idc
    for (int y = 0; y < blocks_; ++y) {
        for (int x = 0; x < blocks_; ++x) {
            writer.unsignedCode(samplesType);
            writeBlock(writer, picture, x, y);
        }
    }
    writer.trail();
    return unit(keyFrameHeader, writer.written());
}

std::string H264Writer::nextFrame(const Picture& picture, const Picture& before) {
    frame_ = (frame_ + 1) % (1U << frameNumberBits);
    BitWriter writer;
    writer.unsignedCode(0);               // first_mb_in_slice
    writer.unsignedCode(5);               // slice_type: P, and so is every slice of the frame
    writer.unsignedCode(0);               // pic_parameter_set_id
    writer.bits(frame_, frameNumberBits); // frame_num
    writer.flag(false);                   // num_ref_idx_active_override_flag
    writer.flag(false);                   // ref_pic_list_modification_flag_l0
    writer.flag(false);                   // adaptive_ref_pic_marking_mode_flag
    writer.unsignedCode(0);               // slice_qp_delta
    writer.unsignedCode(1);               // disable_deblocking_filter_idc
    std::uint32_t unchanged = 0;
    for (int y = 0; y < blocks_; ++y) {
        for (int x = 0; x < blocks_; ++x) {
            if (sameBlock(picture, before, x, y)) {
                ++unchanged;
                continue;
            }
            writer.unsignedCode(unchanged); // mb_skip_run
            unchanged = 0;
            writer.unsignedCode(predictedTypes + samplesType);
            writeBlock(writer, picture, x, y);
        }
    }
    if (unchanged != 0) {
        writer.unsignedCode(unchanged);
    }
    writer.trail();
    return unit(nextFrameHeader, writer.written());
}

} // namespace KeloService
