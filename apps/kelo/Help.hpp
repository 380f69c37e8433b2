#pragma once

#include "Command.hpp"

#include <functional>
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

/// Every command below the path's last one that texts mention, each in front of its own.
void forEachCommand(const CommandPath& path, const std::function<void(const CommandPath&)>& use);

/// The arguments, options, commands and examples of a command, without the options that every
/// command has; those of kelo itself are its own.
std::vector<Section> sectionsOf(const CommandPath& path);
/// Those of the parameters that are options, or those that are not.
std::vector<Entry> entriesOf(const std::vector<Parameter>& parameters, bool options);
/// The examples of a command.
std::vector<Entry> examplesIn(const Command& command);
/// The variables of the environment that kelo reads.
std::vector<Entry> environmentOf(const Command& kelo);
/// The codes that kelo ends with.
std::vector<Entry> exitCodes();

std::string joined(const std::vector<std::string>& parts, const std::string& between);

/// As wide as the terminal.
std::string helpText(const CommandPath& path);

} // namespace KeloHost
