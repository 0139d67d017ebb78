#pragma once

#include <QObject>

#include <functional>

namespace tosvar {

// Whether the sibling product runs, from the names on the session bus; tells
// `onChange` when that changes (and only then). Main thread.
class SiblingWatch final : public QObject {
public:
    explicit SiblingWatch(std::function<void(bool running)> onChange);

    bool isRunning() const { return running_; }
    // Whether it runs now, from a fresh look at the bus.
    static bool scan();

private:
    std::function<void(bool)> onChange_;
    bool running_ = false;
};

} // namespace tosvar
