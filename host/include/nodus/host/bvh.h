// Motion capture in BVH files: a skeleton, then a line of channels for each frame. The format is as
// M. Meredith and S. Maddock describe it in "Motion Capture File Formats Explained" (2001).
#pragma once

#include "nodus/host/line_reader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nodus::host {

struct BvhJoint {
    std::string name;                               // of an end site empty
    std::size_t parent;                             // SIZE_MAX for a root
    std::array<std::string, 3> offset;              // as it is written
    std::vector<std::size_t> positions, rotations;  // 0 to 2 for x to z, in the order of the file
};

// What stands before the frames.
struct BvhSkeleton {
    std::vector<BvhJoint> joints;  // each behind its parent
    std::uint64_t frames = 0;
    // The channels in the order of the file: "hips.tx", in the file's unit of length, and
    // "hips.rx", in degrees there.
    std::vector<std::string> columns;
    std::vector<bool> isAngle;
};

// Reads up to the first frame. Throws Fault with the line.
BvhSkeleton readBvhSkeleton(LineReader& lines);

// A graph file that places a skeleton in the world, with the columns that its table has: for each
// joint a node of its name, a TQS, and for each end site one with its position. Offsets are
// parameters.
std::string graphOfSkeleton(BvhSkeleton const& skeleton, std::string const& name);

}  // namespace nodus::host
