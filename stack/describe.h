#pragma once

#include "stack/plan.h"
#include "stack/stack.h"

namespace corvane::stack {

/// The header of a stack of the lights that the reports say are used: the cards of the reference without those that no
/// longer hold, and what the stack is made of.
///
/// NCOMBINE and STACKCNT (frames), EXPTIME (of one) and LIVETIME (of all) [s], DATE-OBS (earliest start), DATE-AVG
/// (mean of the middles of their exposures, by the weights of the lights), CALSTAT (letters B, D, F for bias, dark and
/// flat), PEDESTAL (what takes the pedestal off when it is added to samples: minus the option's value), and HISTORY
/// with version, parameters and the frames left out.
io::Header DescribeStack(const Options& options, const Plan& plan, const Registration& result);

/// What is said of a light that is written alone, on the grid of the stack.
io::Header DescribeRegistered(const Options& options, const Plan& plan, const Result& stack, int light);

} // namespace corvane::stack
