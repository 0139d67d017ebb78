#include "CommandLineRequest.h"

#include <gtest/gtest.h>

using namespace tosvar;
using Kind = CommandLineRequest::Kind;

TEST(CommandLineRequest, ParsesEveryForm) {
    EXPECT_EQ(CommandLineRequest::parse({}).kind, Kind::start);
    EXPECT_EQ(CommandLineRequest::parse({"--help"}).kind, Kind::help);
    EXPECT_EQ(CommandLineRequest::parse({"-h"}).kind, Kind::help);
    for (const std::string& action : CommandLineRequest::actions()) {
        const auto request = action == "annotate" ? CommandLineRequest::parse({action, "shot.png"}) : CommandLineRequest::parse({action});
        EXPECT_EQ(request.kind, Kind::action) << action;
        EXPECT_EQ(request.action, action);
        EXPECT_NE(CommandLineRequest::helpText().find("  " + action), std::string::npos) << action;
    }
    const auto delayed = CommandLineRequest::parse({"screenshot-delayed", "3"});
    EXPECT_EQ(delayed.kind, Kind::action);
    EXPECT_EQ(delayed.seconds, 3);
    EXPECT_EQ(CommandLineRequest::parse({"annotate", "my shot.png"}).path, "my shot.png");
}

TEST(CommandLineRequest, RejectsWhatItCannotDo) {
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{"shot"}, "unknown action \"shot\""},
        {{"screenshot", "3"}, "unexpected argument \"3\" after screenshot"},
        {{"screenshot-delayed", "3s"}, "whole seconds"},
        {{"screenshot-delayed", "-1"}, "whole seconds"},
        {{"screenshot-delayed", "99999"}, "whole seconds"},
        {{"screenshot-delayed", "1", "2"}, "unexpected argument \"2\""},
        {{"annotate"}, "annotate takes one image file"},
        {{"annotate", "a.png", "b.png"}, "annotate takes one image file"},
    };
    for (const auto& [arguments, message] : rows) {
        const auto request = CommandLineRequest::parse(arguments);
        EXPECT_EQ(request.kind, Kind::invalid) << arguments.front();
        EXPECT_NE(request.error.find(message), std::string::npos) << request.error;
    }
}
