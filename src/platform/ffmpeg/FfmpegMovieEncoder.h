#pragma once

#include "MovieEncoding.h"

namespace tosvar {

// Movies through FFmpeg: H.264 by libx264 and AAC, in QuickTime, MP4 or M4A
// files. Frames and sound are encoded on a thread of the encoder's own, so
// an append only queues; a full queue refuses the append.
Expected<std::unique_ptr<MovieEncoding>> openFfmpegMovieEncoder(const MovieEncoderSettings& settings);

} // namespace tosvar
