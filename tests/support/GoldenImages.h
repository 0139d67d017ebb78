#pragma once

#include "ImageBuffer.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace tosvar {

// How close a rendering must be to its reference: pixels whose channels all
// lie within `channelTolerance` of the reference match; at most
// `differingPixels` may not.
struct ImageTolerance {
    int channelTolerance = 2;
    int differingPixels = 0;
};

// Compares `actual` with the reference PNG at `golden`, channel by channel in
// premultiplied values. On a mismatch the actual image, the reference and a
// map of the differing pixels are written to a folder named in the message
// (`TOSVAR_TEST_OUTPUT`, or the temporary folder). With the environment
// variable TOSVAR_UPDATE_GOLDENS=1 the reference is written from `actual`
// instead and the comparison passes.
::testing::AssertionResult matchesGolden(const ImageBuffer& actual, const std::filesystem::path& golden,
                                         ImageTolerance tolerance = {});

} // namespace tosvar
