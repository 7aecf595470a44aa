// Every wing must do what DynamicLibrary.h says. The fake host service lies beside this program.
#include "Runtime/DynamicLibrary.h"

#include <gtest/gtest.h>

TEST(DynamicLibraryTest, ALibraryBesideTheProgramIsLoadedAndItsFunctionsAreFound)
{
    qlt::LibraryHandle library = qlt::LoadInstalledLibrary("vr_host_client_lib");
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(qlt::LoadInstalledLibrary("vr_host_client_lib"), library);
    EXPECT_NE(qlt::FindFunction(library, "VRHost_getHandlePtr"), nullptr);
    EXPECT_EQ(qlt::FindFunction(library, "VRHost_noSuchFunction"), nullptr);
}

TEST(DynamicLibraryTest, AMissingLibraryOrFunctionIsNull)
{
    EXPECT_EQ(qlt::LoadInstalledLibrary("qlt_no_such_library"), nullptr);
}
