#include "SerialQueue.h"

#include <future>

namespace tosvar {

void SerialQueue::sync(const std::function<void()>& work) {
    std::promise<void> done;
    async([&] {
        work();
        done.set_value();
    });
    done.get_future().wait();
}

} // namespace tosvar
