#pragma once

#include "support/TemporaryFolder.hpp"

#include <KeloAPI/base/Data.hpp>

#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace KeloAPI::testing {

/// A real Foundation's archives. The languages of objects and classes stand at the head of
/// foundation-archive.m. What it refuses is thrown with its own words.
class FoundationArchive {
public:
    /// The archive that it writes of `objects`.
    static Data write(const std::string& objects) {
        const TemporaryFolder folder;
        run(folder, "write", objects);
        return Data(folder.read("archive"));
    }

    /// What it reads in an archive that has objects of these classes.
    static std::string read(const Data& archive, const std::string& classes) {
        const TemporaryFolder folder;
        folder.write("archive", std::string(archive.text()));
        run(folder, "read", classes);
        return folder.read("output");
    }

private:
    static void run(const TemporaryFolder& folder, const std::string& verb,
                    const std::string& input) {
        folder.write("input", input);
        const std::string command = "'" KELO_FOUNDATION_ARCHIVE "' " + verb + " '" +
                                    folder.path("archive") + "' <'" + folder.path("input") +
                                    "' >'" + folder.path("output") + "' 2>'" +
                                    folder.path("errors") + "'";
        if (std::system(command.c_str()) != 0) {
            throw std::runtime_error(folder.read("errors"));
        }
    }
};

/// An object as its class's name and the values of its entries.
using ObjectLines = std::pair<std::string, std::vector<std::string>>;

/// Objects in that language, the first one with the number 1. What entries they have, and of which
/// kinds, is said in `classes`.
inline std::string objectsOf(const std::string& classes, const std::vector<ObjectLines>& objects) {
    std::string lines;
    int number = 0;
    for (const auto& [name, values] : objects) {
        lines += "object " + std::to_string(++number) + " " + name + "\n";
        std::istringstream description(classes);
        std::string line;
        while (std::getline(description, line) && line != "class " + name) {
        }
        for (const std::string& value : values) {
            std::getline(description, line);
            lines += line + " " + value + "\n";
        }
    }
    return lines;
}

/// As a range is archived.
inline const std::string rangeClass = "class NSValue\n"
                                      "int64 NS.special\n"
                                      "number NS.rangeval.length\n"
                                      "number NS.rangeval.location\n";

} // namespace KeloAPI::testing
