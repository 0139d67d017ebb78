#include "CommandLineRequest.h"

#include <algorithm>
#include <charconv>

namespace tosvar {

const std::vector<std::string>& CommandLineRequest::actions() {
    static const std::vector<std::string> names{
        "screenshot", "screenshot-full", "screenshot-delayed", "scroll", "text", "translate", "record",
        "record-full", "record-audio", "present", "pin-clipboard", "annotate", "library", "settings", "quit"};
    return names;
}

std::string CommandLineRequest::helpText() {
    return "Usage: tosvar [ACTION]\n"
           "\n"
           "Without an action, starts the capture application in the tray.\n"
           "With one, hands the action to the running application (starting it\n"
           "first if needed) and exits; bind these to keys in your desktop.\n"
           "\n"
           "Actions:\n"
           "  screenshot                  pick a region, window or element\n"
           "  screenshot-full             capture the screen under the pointer\n"
           "  screenshot-delayed [SECS]   pick a region after a countdown\n"
           "  scroll                      scrolling capture of a region\n"
           "  text                        recognise the text of a region\n"
           "  translate                   translate a region\n"
           "  record                      start or stop a screen recording\n"
           "  record-full                 record the screen under the pointer\n"
           "  record-audio                start or stop a sound recording\n"
           "  present                     start or stop presentation mode\n"
           "  pin-clipboard               pin the clipboard as a sticker\n"
           "  annotate FILE               open an image in the annotation editor\n"
           "  library                     open the capture library\n"
           "  settings                    open the settings\n"
           "  quit                        quit the running application\n"
           "\n"
           "Options:\n"
           "  -h, --help                  show this text\n";
}

CommandLineRequest CommandLineRequest::parse(const std::vector<std::string>& arguments) {
    CommandLineRequest request;
    if (arguments.empty()) return request;
    const std::string& first = arguments.front();
    if (first == "-h" || first == "--help" || first == "help") {
        request.kind = Kind::help;
        return request;
    }
    request.kind = Kind::invalid;
    if (std::find(actions().begin(), actions().end(), first) == actions().end()) {
        request.error = "unknown action \"" + first + "\" (see tosvar --help)";
        return request;
    }
    if (first == "annotate") {
        if (arguments.size() != 2 || arguments[1].empty()) {
            request.error = "annotate takes one image file: tosvar annotate FILE";
            return request;
        }
        request.kind = Kind::action;
        request.action = first;
        request.path = arguments[1];
        return request;
    }
    const std::size_t allowed = first == "screenshot-delayed" ? 2 : 1;
    if (arguments.size() > allowed) {
        request.error = "unexpected argument \"" + arguments[allowed] + "\" after " + first;
        return request;
    }
    if (arguments.size() == 2) {
        int seconds = 0;
        const std::string& text = arguments[1];
        auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
        if (error != std::errc() || end != text.data() + text.size() || seconds < 0 || seconds > 3600) {
            request.error = "screenshot-delayed takes whole seconds from 0 to 3600, not \"" + text + "\"";
            return request;
        }
        request.seconds = seconds;
    }
    request.kind = Kind::action;
    request.action = first;
    return request;
}

} // namespace tosvar
