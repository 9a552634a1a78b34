#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "catalogue/operation.h"
#include "corvane/platform/export.h"

namespace corvane::catalogue {

/// Every operation, group by group, in the order in which they are listed.
CORVANE_VISIBLE const std::vector<Operation>& Operations();

/// The operation with this name or alias. Throws Error with the nearest names when there is none.
CORVANE_VISIBLE const Operation& FindOperation(std::string_view name);

/// @name The groups that `Operations` gathers
/// @{
std::vector<Operation> ToneOperations();
std::vector<Operation> StretchOperations();
std::vector<Operation> AdjustOperations();
std::vector<Operation> CalibrationOperations();
std::vector<Operation> MeasureOperations();
std::vector<Operation> ColourOperations();
std::vector<Operation> ColourMosaicOperations();
std::vector<Operation> SeparationOperations();
std::vector<Operation> SmoothOperations();
std::vector<Operation> SharpenOperations();
std::vector<Operation> RestoreOperations();
std::vector<Operation> DevelopOperations();
std::vector<Operation> MaskOperations();
std::vector<Operation> GeometryOperations();
std::vector<Operation> DrawOperations();
std::vector<Operation> CompositeOperations();
std::vector<Operation> MosaicOperations();
std::vector<Operation> MatchOperations();
std::vector<Operation> ColourCompositeOperations();
std::vector<Operation> PaletteOperations();
std::vector<Operation> ContinuumOperations();
std::vector<Operation> StatsOperations();
std::vector<Operation> StarOperations();
/// @}

} // namespace corvane::catalogue
