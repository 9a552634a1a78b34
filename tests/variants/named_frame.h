#pragma once

#include <string>

#include "io/frame.h"

/// Columns and rows of the frames.
inline constexpr int kFrameWidth = 131;
inline constexpr int kFrameHeight = 97;

/// True when a frame of that name is of three planes: those with "colour" in their name.
bool IsColourFrame(const std::string& name);

/// A frame made in memory, of which the name is told by the image. "undefined" in it brings a blank value, NaN,
/// infinities, rows from the bottom up, and no display levels; "mask" samples from 0 to 1. World coordinates are in the
/// header alone.
corvane::io::Frame MakeNamedFrame(const std::string& name);
