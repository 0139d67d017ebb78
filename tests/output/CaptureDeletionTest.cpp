#include "CaptureDeletion.h"

#include "InMemoryDefaultsStore.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

struct ScriptedAlerts final : AlertPresenting {
    AlertResponse answer;
    std::vector<AlertRequest> shown;
    AlertResponse run(const AlertRequest& request, void*) override {
        shown.push_back(request);
        return answer;
    }
};

struct RecordingTrash final : FileTrash {
    std::vector<std::filesystem::path> trashed;
    std::optional<std::filesystem::path> failOn;
    std::optional<Error> moveToTrash(const std::filesystem::path& file) override {
        if (file == failOn) return Error{"cannot trash " + file.string()};
        trashed.push_back(file);
        return std::nullopt;
    }
};

class CaptureDeletionTest : public ::testing::Test {
protected:
    InMemoryDefaultsStore defaults;
    ScriptedAlerts alerts;
    RecordingTrash trash;
    CaptureDeletion deletion{defaults, alerts, trash};
    int completions = 0;
    std::optional<Error> outcome;
    CaptureDeletion::Completion done = [this](const std::optional<Error>& e) {
        ++completions;
        outcome = e;
    };
};

} // namespace

TEST_F(CaptureDeletionTest, EmptySelectionShowsNoDialogAndCompletesNothing) {
    deletion.trash({}, nullptr, done);
    deletion.trashWithoutAsking({}, done);
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_EQ(completions, 0);
}

TEST_F(CaptureDeletionTest, ConfirmedDeletionTrashesEveryFile) {
    alerts.answer = {0, false};
    deletion.trash({"/p/a.png", "/p/b.mp4"}, nullptr, done);
    ASSERT_EQ(alerts.shown.size(), 1u);
    EXPECT_EQ(alerts.shown[0].message, (LocalizedText{"delete.confirm.title.many", {"2"}}));
    EXPECT_EQ(trash.trashed, (std::vector<std::filesystem::path>{"/p/a.png", "/p/b.mp4"}));
    EXPECT_EQ(completions, 1);
    EXPECT_FALSE(outcome.has_value());
}

TEST_F(CaptureDeletionTest, SuppressionIsHonouredEvenOnCancel) {
    alerts.answer = {1, true};
    deletion.trash({"/p/a.png"}, nullptr, done);
    EXPECT_TRUE(trash.trashed.empty());
    EXPECT_EQ(completions, 0);
    EXPECT_TRUE(deletion.isConfirmationSuppressed());
    EXPECT_EQ(alerts.shown[0].message, (LocalizedText{"delete.confirm.title.one", {"a.png"}}));

    deletion.trash({"/p/a.png"}, nullptr, done); // no second question
    EXPECT_EQ(alerts.shown.size(), 1u);
    EXPECT_EQ(trash.trashed.size(), 1u);
}

TEST_F(CaptureDeletionTest, ConfirmationCarriesEveryTextOfTheDialog) {
    const AlertRequest request = CaptureDeletion::confirmation({"/x/shot.png"});
    EXPECT_EQ(request.style, AlertStyle::warning);
    EXPECT_EQ(request.informativeText.key, "delete.confirm.body");
    ASSERT_EQ(request.buttons.size(), 2u);
    EXPECT_EQ(request.buttons[0].key, "delete.confirm.trash");
    EXPECT_EQ(request.buttons[1].key, "common.cancel");
    EXPECT_EQ(request.suppressionCheckbox->key, "delete.confirm.dontAsk");
}

TEST_F(CaptureDeletionTest, AFailureIsReportedAndTheRestStillGoes) {
    trash.failOn = "/p/b.png";
    deletion.trashWithoutAsking({"/p/a.png", "/p/b.png", "/p/c.png"}, done);
    EXPECT_EQ(trash.trashed.size(), 2u);
    ASSERT_TRUE(outcome.has_value());
    EXPECT_NE(outcome->message.find("b.png"), std::string::npos);
}
