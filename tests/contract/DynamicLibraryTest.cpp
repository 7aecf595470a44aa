// What DynamicLibrary.h promises, of every wing. The fake host service lies beside this program.
#include "Runtime/DynamicLibrary.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

TEST(DynamicLibraryTest, WhatIsBesideTheProgramIsLoadedAndAsked)
{
    qlt::LibraryHandle library = qlt::LoadInstalledLibrary("vr_host_client_lib");
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(qlt::LoadInstalledLibrary("vr_host_client_lib"), library);
    EXPECT_NE(qlt::FindFunction(library, "VRHost_getHandlePtr"), nullptr);
    EXPECT_EQ(qlt::FindFunction(library, "VRHost_noSuchFunction"), nullptr);
}

TEST(DynamicLibraryTest, WhatIsNotThereIsNull)
{
    EXPECT_EQ(qlt::LoadInstalledLibrary("qlt_no_such_library"), nullptr);
}

// Where anybody may put a library: it would run with the rights of the game.
TEST(DynamicLibraryTest, TheCurrentFolderIsNotSearched)
{
    const fs::path home = fs::current_path();
    const fs::path planted = fs::temp_directory_path() / "qlt_planted_library";
    fs::create_directories(planted);
    const fs::path file = QLT_SERVICE_FILE; // has the system's prefix and extension
    std::string name = file.filename().string();
    name.replace(name.find("vr_host_client_lib"), 18, "qlt_planted_library");
    fs::copy_file(file, planted / name, fs::copy_options::overwrite_existing);
    fs::current_path(planted);
    EXPECT_EQ(qlt::LoadInstalledLibrary("qlt_planted_library"), nullptr);
    fs::current_path(home);
    fs::remove_all(planted);
}
