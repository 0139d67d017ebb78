#pragma once

#include "AnnotationFileSaver.h"

#include <chrono>
#include <string>

namespace tosvar {

// "Save as" for an edited image: a dialog for PNG files that opens in the
// Pictures folder with a name of the moment, above the capture windows.
class QtAnnotationFileSaver final : public AnnotationFileSaver {
public:
    void save(const Bytes& png) override;

    // "Vemla_" and the local time as yyyyMMdd_HHmmss, with ".png".
    static std::string suggestedName(std::chrono::system_clock::time_point at);
};

} // namespace tosvar
