// Feeds arbitrary text to the element reader, as one element and as a list.
// Whatever reads must write again, read back equal (picture bytes included)
// and write the same text a second time; anything else is a fault.
#include "AnnotationJson.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

using namespace tosvar;

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

bool sameBytes(const AnnotationElement& x, const AnnotationElement& y) {
    const AnnotationImage* a = x.kind.imagePayload();
    const AnnotationImage* b = y.kind.imagePayload();
    if (!a || !b) return a == b;
    const auto p = a->data.span();
    const auto q = b->data.span();
    return std::equal(p.begin(), p.end(), q.begin(), q.end());
}

void checkList(std::string_view text) {
    const Expected<std::vector<AnnotationElement>> read = AnnotationJson::decodeElements(text);
    if (!read) {
        require(!read.error().message.empty());
        return;
    }
    const Expected<std::string> written = AnnotationJson::encodeElements(*read);
    require(written.ok());
    const Expected<std::vector<AnnotationElement>> again = AnnotationJson::decodeElements(*written);
    require(again.ok() && *again == *read);
    require(std::equal(read->begin(), read->end(), again->begin(), again->end(), sameBytes));
    require(*AnnotationJson::encodeElements(*again) == *written);
}

void checkElement(std::string_view text) {
    const Expected<AnnotationElement> read = AnnotationJson::decodeElement(text);
    if (!read) {
        require(!read.error().message.empty());
        return;
    }
    const Expected<std::string> written = AnnotationJson::encodeElement(*read);
    require(written.ok());
    const Expected<AnnotationElement> again = AnnotationJson::decodeElement(*written);
    require(again.ok() && *again == *read && sameBytes(*again, *read));
    require(*AnnotationJson::encodeElement(*again) == *written);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    checkList(text);
    checkElement(text);
    return 0;
}
