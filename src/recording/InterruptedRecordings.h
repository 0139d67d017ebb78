#pragma once

#include "AlertPresenting.h"
#include "DefaultsStore.h"
#include "Expected.h"
#include "FileManager.h"
#include "MovieFileProcessing.h"

#include <filesystem>
#include <vector>

namespace tosvar {

// Recordings cut short by a crash or a power cut. Screen recordings are
// written, in fragments of about a second, to a folder of their own that
// outlives the process; whatever is left there at the next launch was never
// finished, and the fragments written before the end still play.
namespace InterruptedRecordings {

// The folder movies are written to while they are recorded.
std::filesystem::path folder(const std::filesystem::path& stateDirectory);
// The unfinished movies in it, oldest first.
std::vector<std::filesystem::path> find(const std::filesystem::path& folder);
// Saves one as an MP4 in the save folder, named for when it was last
// written; the unfinished movie goes once it is saved.
Expected<std::filesystem::path> recover(const std::filesystem::path& movie, MovieFileProcessing& processing, DefaultsStore& defaults,
                                        FileManager& files);
// Asks whether to keep the unfinished movies and keeps or removes them; the
// files kept, in the save folder.
std::vector<std::filesystem::path> offer(const std::vector<std::filesystem::path>& movies, AlertPresenting& alerts,
                                         MovieFileProcessing& processing, DefaultsStore& defaults, FileManager& files);

} // namespace InterruptedRecordings

} // namespace tosvar
