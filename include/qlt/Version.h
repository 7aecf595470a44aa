/// @file
/// The version of the library, for the preprocessor. The build takes its version from here.
#pragma once

#define QLT_VERSION_MAJOR 1
#define QLT_VERSION_MINOR 0
#define QLT_VERSION_PATCH 0
#define QLT_VERSION_STRING "1.0.0"
