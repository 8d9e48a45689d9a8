#pragma once

/// Marks what a shared object of this project exports. Everything else is
/// built with `-fvisibility=hidden`.
#define TAVRINE_EXPORT __attribute__((visibility("default")))
