#pragma once

#include "Command.hpp"

#include <string>
#include <vector>

// What kelo says about itself, made of the description of its commands.
namespace KeloHost {

/// The way from kelo itself to one of its commands, which is the last.
using CommandPath = std::vector<const Command*>;

/// One thing that is explained: an option, a command, ...
struct Entry {
    std::string name;
    std::string text;
};

struct Section {
    std::string heading;
    std::vector<Entry> entries;
};

/// "kelo cache trim"
std::string nameOf(const CommandPath& path);
/// "kelo cache trim [OPTIONS] N"
std::string usageOf(const CommandPath& path);

/// The arguments, options, commands and examples of a command, without the options that every
/// command has; those of kelo itself are its own.
std::vector<Section> sectionsOf(const CommandPath& path);
/// Those of the parameters that are options, or those that are not.
std::vector<Entry> entriesOf(const std::vector<Parameter>& parameters, bool options);
/// The codes that kelo ends with.
std::vector<Entry> exitCodes();

/// As wide as the terminal.
std::string helpText(const CommandPath& path);

} // namespace KeloHost
