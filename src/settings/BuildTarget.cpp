#include "BuildTarget.h"

namespace tosvar {

const BuildTarget& BuildTarget::current() {
    static const BuildTarget target = fromIdentifier(applicationIdentifier(), BuildChannel::direct);
    return target;
}

const char* BuildTarget::applicationIdentifier() { return TOSVAR_APP_ID; }

BuildTarget BuildTarget::fromIdentifier(std::string_view identifier, BuildChannel channel) {
    BuildProduct product = BuildProduct::vemla;
    if (identifier.starts_with("app.vemla.tosvar")) {
        product = BuildProduct::tosvar;
    } else if (identifier.starts_with("app.vemla.sedlo")) {
        product = BuildProduct::sedlo;
    }
    return {product, channel};
}

std::string BuildTarget::name() const {
    const char* productName = product == BuildProduct::tosvar ? "tosvar"
                              : product == BuildProduct::sedlo ? "sedlo"
                                                               : "vemla";
    return std::string(productName) + "-" + (channel == BuildChannel::direct ? "direct" : "appStore");
}

std::string BuildTarget::displayName() const {
    switch (product) {
    case BuildProduct::tosvar: return "Tosvar";
    case BuildProduct::sedlo: return "Sedlo";
    case BuildProduct::vemla: return "Vemla";
    }
    return "Vemla";
}

} // namespace tosvar
