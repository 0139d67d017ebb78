#include "WindowListing.h"

#include <map>
#include <string_view>

namespace tosvar::WindowLevel {

int forTypes(const std::vector<std::string>& typeNames, bool overrideRedirect) {
    static const std::map<std::string_view, int> levels{
        {"_NET_WM_WINDOW_TYPE_DOCK", dock},
        {"_NET_WM_WINDOW_TYPE_MENU", menu},           {"_NET_WM_WINDOW_TYPE_DROPDOWN_MENU", menu},
        {"_NET_WM_WINDOW_TYPE_POPUP_MENU", menu},     {"_NET_WM_WINDOW_TYPE_TOOLTIP", menu},
        {"_NET_WM_WINDOW_TYPE_COMBO", menu},          {"_NET_WM_WINDOW_TYPE_NOTIFICATION", menu},
        {"_NET_WM_WINDOW_TYPE_DND", menu},            {"_NET_WM_WINDOW_TYPE_DESKTOP", desktop},
    };
    for (const std::string& name : typeNames)
        if (const auto found = levels.find(name); found != levels.end()) return found->second;
    return overrideRedirect ? menu : normal;
}

} // namespace tosvar::WindowLevel
