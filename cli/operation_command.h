#pragma once

#include <functional>

#include <CLI/App.hpp>

#include "catalogue/operation.h"
#include "catalogue/step.h"
#include "cli/session.h"

namespace corvane::cli {

/// Adds the parameters of an operation to a command, `--name` each; what is given goes into the settings.
void AddParameters(CLI::App& command, const catalogue::Operation& operation, catalogue::Settings& settings);

/// Prints what an operation found.
using PrintTable = std::function<void(const catalogue::Table& table, bool json)>;

/// Adds a command that is an operation of the catalogue: its inputs are the words of the command line, its parameters
/// options. It writes the image that comes out, or prints the numbers.
void AddOperation(CLI::App& app, Session& session, const char* name, const PrintTable& print = {});

} // namespace corvane::cli
