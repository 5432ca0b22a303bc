// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks what a library shows to the others. Everything is built with hidden visibility, so a class whose
/// type information or a function whose symbol must cross a library boundary says so with this macro.
#define PLEX_EXPORT __attribute__((visibility("default")))
