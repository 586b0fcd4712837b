// NODUS_API marks what crosses the boundary of a shared library; all else is built hidden.
#pragma once

#define NODUS_API __attribute__((visibility("default")))
