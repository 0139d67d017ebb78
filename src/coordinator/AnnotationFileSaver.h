#pragma once

#include "DefaultsStore.h"

namespace tosvar {

// The "save as" step of an edit that ended with the save action.
class AnnotationFileSaver {
public:
    virtual ~AnnotationFileSaver() = default;
    virtual void save(const Bytes& png) = 0;
};

} // namespace tosvar
