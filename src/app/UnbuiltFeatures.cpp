#include "UnbuiltFeatures.h"

namespace tosvar {

namespace {

class UnbuiltCountdown final : public RecordingCountdown {
public:
    explicit UnbuiltCountdown(NotBuiltNotice notBuilt) : notBuilt_(std::move(notBuilt)) {}
    void run(std::function<void()>) override { notBuilt_("delayed capture"); }
    void cancel() override {}

private:
    NotBuiltNotice notBuilt_;
};

} // namespace

RecordingCountdownFactory unbuiltCountdowns(NotBuiltNotice notBuilt)
{
    return [notBuilt](int, const Rect&) { return std::make_unique<UnbuiltCountdown>(notBuilt); };
}

} // namespace tosvar
