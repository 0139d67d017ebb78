#include "X11WindowList.h"

#include "Log.h"

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>

namespace tosvar {

namespace {

template <typename Reply>
using ReplyPointer = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply>
ReplyPointer<Reply> owned(Reply* reply) {
    return ReplyPointer<Reply>(reply, &std::free);
}

} // namespace

struct X11WindowList::Connection {
    xcb_connection_t* xcb = nullptr;
    xcb_window_t root = 0;
    std::map<std::string, xcb_atom_t> atoms;
    std::map<xcb_atom_t, std::string> names;

    ~Connection() {
        if (xcb) xcb_disconnect(xcb);
    }

    xcb_atom_t atom(const std::string& name) {
        if (auto found = atoms.find(name); found != atoms.end()) return found->second;
        auto reply = owned(xcb_intern_atom_reply(
            xcb, xcb_intern_atom(xcb, 0, static_cast<std::uint16_t>(name.size()), name.c_str()), nullptr));
        const xcb_atom_t value = reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
        atoms.emplace(name, value);
        return value;
    }

    // The 32-bit values of a property, none when absent.
    std::optional<std::vector<std::uint32_t>> cardinals(xcb_window_t window, const std::string& name, xcb_atom_t type) {
        auto reply = owned(xcb_get_property_reply(
            xcb, xcb_get_property(xcb, 0, window, atom(name), type, 0, 4096), nullptr));
        if (!reply || reply->format != 32 || reply->type == static_cast<xcb_atom_t>(XCB_ATOM_NONE)) return std::nullopt;
        const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
        return std::vector<std::uint32_t>(values, values + xcb_get_property_value_length(reply.get()) / 4);
    }

    // Bottom to top.
    std::vector<xcb_window_t> stacking() {
        if (auto list = cardinals(root, "_NET_CLIENT_LIST_STACKING", XCB_ATOM_WINDOW)) return *list;
        auto tree = owned(xcb_query_tree_reply(xcb, xcb_query_tree(xcb, root), nullptr));
        if (!tree) return {};
        const xcb_window_t* children = xcb_query_tree_children(tree.get());
        return {children, children + xcb_query_tree_children_length(tree.get())};
    }

    std::string atomName(xcb_atom_t atom) {
        if (auto found = names.find(atom); found != names.end()) return found->second;
        auto reply = owned(xcb_get_atom_name_reply(xcb, xcb_get_atom_name(xcb, atom), nullptr));
        std::string name = reply ? std::string(xcb_get_atom_name_name(reply.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get())))
                                 : std::string();
        names.emplace(atom, name);
        return name;
    }

    int level(xcb_window_t window, bool overrideRedirect) {
        std::vector<std::string> types;
        if (auto kinds = cardinals(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM))
            for (std::uint32_t kind : *kinds) types.push_back(atomName(kind));
        return WindowLevel::forTypes(types, overrideRedirect);
    }
};

X11WindowList::X11WindowList(double scale, const std::string& display)
    : connection_(std::make_unique<Connection>()), scale_(scale > 0 ? scale : 1) {
    connection_->xcb = xcb_connect(display.empty() ? nullptr : display.c_str(), nullptr);
    if (xcb_connection_has_error(connection_->xcb)) {
        logLine("window list: cannot connect to the X server");
        return;
    }
    connection_->root = xcb_setup_roots_iterator(xcb_get_setup(connection_->xcb)).data->root;
}

X11WindowList::~X11WindowList() = default;

std::vector<WindowInfo> X11WindowList::onScreenWindows() {
    Connection& c = *connection_;
    std::vector<WindowInfo> list;
    if (!c.xcb || xcb_connection_has_error(c.xcb)) return list;
    const std::vector<xcb_window_t> windows = c.stacking();
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
        auto attributes = owned(xcb_get_window_attributes_reply(c.xcb, xcb_get_window_attributes(c.xcb, *window), nullptr));
        if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE ||
            attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY)
            continue;
        auto geometry = owned(xcb_get_geometry_reply(c.xcb, xcb_get_geometry(c.xcb, *window), nullptr));
        auto origin = owned(xcb_translate_coordinates_reply(
            c.xcb, xcb_translate_coordinates(c.xcb, *window, c.root, 0, 0), nullptr));
        if (!geometry || !origin) continue;

        WindowInfo info;
        info.id = *window;
        if (auto pid = c.cardinals(*window, "_NET_WM_PID", XCB_ATOM_CARDINAL); pid && !pid->empty()) info.ownerPID = pid->front();
        info.layer = c.level(*window, attributes->override_redirect != 0);
        if (auto opacity = c.cardinals(*window, "_NET_WM_WINDOW_OPACITY", XCB_ATOM_CARDINAL); opacity && !opacity->empty())
            info.alpha = opacity->front() / 4294967295.0;
        // A managed window is what the user sees of it: its frame included.
        double left = 0, right = 0, top = 0, bottom = 0;
        if (auto extents = c.cardinals(*window, "_NET_FRAME_EXTENTS", XCB_ATOM_CARDINAL); extents && extents->size() == 4) {
            left = (*extents)[0];
            right = (*extents)[1];
            top = (*extents)[2];
            bottom = (*extents)[3];
        }
        info.bounds = Rect((origin->dst_x - left) / scale_, (origin->dst_y - top) / scale_, (geometry->width + left + right) / scale_,
                           (geometry->height + top + bottom) / scale_);
        list.push_back(info);
    }
    return list;
}

} // namespace tosvar
