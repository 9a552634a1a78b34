#pragma once

#include <functional>
#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "catalogue/operation.h"
#include "catalogue/step.h"
#include "cli/session.h"

namespace corvane::cli {

/// The words with a capital letter.
std::string Sentence(std::string words);

/// Adds a command with the name, the summary and the help of an operation, and the options that every command takes.
CLI::App& AddCommand(CLI::App& app, Session& session, const catalogue::Operation& operation);

/// Adds the inputs of an operation to a command: as words of the command line, or as options `--name` that take several
/// files where there may be none. That there are some of several is left to the command.
void AddInputs(CLI::App& command, const catalogue::Operation& operation, catalogue::Files& files);

/// All of these files, in the order of the inputs.
std::vector<std::string> FilesOf(const catalogue::Files& files, const catalogue::Operation& operation);

/// An error of work on files: of the file in place of the input, with parameters as options.
Error OnFiles(const Error& error, const catalogue::Operation& operation, const catalogue::Files& files);

/// Adds the parameters of an operation to a command, `--name` each but for words; what is given goes into the settings.
void AddParameters(CLI::App& command, const catalogue::Operation& operation, catalogue::Settings& settings);

/// Prints what an operation found.
using PrintTable = std::function<void(const catalogue::Table& table, bool json)>;

/// Adds a command that is an operation of the catalogue: its inputs are the words of the command line, its parameters
/// options. It writes the image that comes out, and prints the numbers where it is told how.
void AddOperation(CLI::App& app, Session& session, const char* name, const PrintTable& print = {});

} // namespace corvane::cli
