#pragma once

// What a line of the table is made of: the line itself, frames to work on, and checks of the result.
#include "bench/support/check.h"
#include "bench/support/frames.h"
#include "bench/support/line.h"
