// machine.h: what tests may ask of the machine that they run on.
#pragma once

// A board has a few megabytes where a desktop has gigabytes.
#if defined(__unix__)
constexpr bool has_little_memory = false;
#else
constexpr bool has_little_memory = true;
#endif

// How many things a test makes that shall make as many as the machine can bear: `count`, or a twentieth of it on a
// board.
constexpr int many(int count) { return has_little_memory ? count / 20 : count; }

// Some systems open a folder and fail to read from it; others do not open it.
constexpr bool folders_can_be_opened = !has_little_memory;
