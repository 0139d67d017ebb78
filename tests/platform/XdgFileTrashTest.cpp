#include "XdgFileTrash.h"

#include "FileContents.h"
#include "IsolatedEnvironment.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace tosvar;

TEST(XdgFileTrash, TrashedCaptureLandsInTheTrashWithItsInfo) {
    IsolatedEnvironment environment;
    const auto capture = environment.root() / "home" / "Pictures" / "Tosvar" / "Tosvar Screenshot 1.png";
    std::filesystem::create_directories(capture.parent_path());
    std::ofstream(capture) << "png bytes";

    XdgFileTrash trash;
    ASSERT_FALSE(trash.moveToTrash(capture));
    EXPECT_FALSE(std::filesystem::exists(capture));
    const auto trashDir = environment.root() / "data" / "Trash";
    EXPECT_EQ(readFileText(trashDir / "files" / "Tosvar Screenshot 1.png").value(), "png bytes");
    const auto info = readFileText(trashDir / "info" / "Tosvar Screenshot 1.png.trashinfo");
    ASSERT_TRUE(info) << info.error().message;
    EXPECT_NE(info->find("[Trash Info]"), std::string::npos);
    EXPECT_NE(info->find("Path="), std::string::npos);
    EXPECT_NE(info->find("DeletionDate="), std::string::npos);

    auto missing = trash.moveToTrash(capture);
    ASSERT_TRUE(missing.has_value());
    EXPECT_NE(missing->message.find("no such file"), std::string::npos);
}
