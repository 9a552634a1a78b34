#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "catalogue/operation.h"

namespace corvane::cli {

/// @name What the catalogue and the commands tell of themselves, for programs and for pages
/// @{
/// JSON of the operations: a list, or one object.
std::string OperationsJson(const std::vector<const catalogue::Operation*>& operations, bool asList);
/// The reference of every operation, as Markdown.
std::string OperationsPage();
/// The page for `man`.
std::string ManPage(const CLI::App& app);
/// The script by which bash completes commands, options, steps and their values.
std::string BashCompletion(const CLI::App& app);
/// @}

/// @name Words for them
/// @{
const char* WordFor(catalogue::Kind kind);
const char* WordFor(catalogue::OutputKind kind);
const char* WordFor(catalogue::Count count);
/// "colour images"
const char* WordFor(catalogue::Planes planes);
/// @}

/// The parameters that are told of.
std::vector<catalogue::Parameter> ShownParameters(const catalogue::Operation& operation);

/// Those of them that the operation does not share with most others.
std::vector<catalogue::Parameter> OwnParameters(const catalogue::Operation& operation);

/// The commands of the application.
std::vector<const CLI::App*> CommandsOf(const CLI::App& app);

} // namespace corvane::cli
