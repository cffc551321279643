/// @file VelmarApi.h
/// Marks what the shared library makes visible to its users.
#pragma once

/// Public classes, functions and data of the library carry this; everything else stays hidden.
#define VELMAR_API __attribute__((visibility("default")))

/// The version of the library's interface. Schema libraries are generated for one version.
#define VELMAR_VERSION_MAJOR 3
/// The second number of the version; see VELMAR_VERSION_MAJOR.
#define VELMAR_VERSION_MINOR 1
