#pragma once

#include "FileTrash.h"

namespace tosvar {

// The freedesktop.org trash of the file's volume (with its .trashinfo record,
// so file managers can restore it).
class XdgFileTrash final : public FileTrash {
public:
    std::optional<Error> moveToTrash(const std::filesystem::path& file) override;
};

} // namespace tosvar
