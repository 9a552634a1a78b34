#pragma once

/// @file
/// Everything that a caller of the library needs.

#include "corvane/combine/matching.h"
#include "corvane/combine/median_composit.h"
#include "corvane/core/line_data.h"
#include "corvane/core/memory_budget.h"
#include "corvane/core/page_map.h"
#include "corvane/core/progress_message.h"
#include "corvane/core/stl_image.h"
#include "corvane/core/vm_image.h"
#include "corvane/filter/filter.h"
#include "corvane/platform/application.h"
#include "corvane/platform/global_memory.h"
#include "corvane/platform/messages.h"
#include "corvane/platform/registry.h"
#include "corvane/resources/string_table.h"
#include "corvane/tone/auto_level.h"
#include "corvane/tone/bright.h"
#include "corvane/tone/calculation.h"
#include "corvane/tone/color_balance.h"
#include "corvane/tone/false_color.h"
#include "corvane/tone/invert.h"
#include "corvane/tone/reduce_tone.h"
#include "corvane/tone/tone_curve.h"
