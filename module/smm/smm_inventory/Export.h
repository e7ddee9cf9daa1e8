#pragma once

/// Marks what the shared library exports; everything else is hidden.
#define POVEIXME_EXPORT __attribute__((visibility("default")))
