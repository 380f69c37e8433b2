#pragma once

#include "TemporaryFolder.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace KeloAPI::testing {

/// Compares what a test has measured with the part of a document that says so: the lines between
/// the comments "begin NAME" and "end NAME". A difference fails the test. With KELO_UPDATE_DOCS in
/// the environment the document is rewritten instead: for one program at a time.
inline void expectGeneratedBlock(const std::string& document, const std::string& name,
                                 const std::string& lines) {
    const std::string begin = "<!-- begin " + name + " -->\n";
    const std::string end = "<!-- end " + name + " -->\n";
    std::string text = contentsOf(document);
    const auto from = text.find(begin);
    const auto to = text.find(end);
    ASSERT_TRUE(from != std::string::npos && to != std::string::npos && from < to)
        << document << " has no block \"" << name << '"';
    const auto inner = from + begin.size();
    const std::string wanted = "\n" + lines + "\n";
    if (std::getenv("KELO_UPDATE_DOCS") != nullptr) {
        text.replace(inner, to - inner, wanted);
        std::ofstream(document, std::ios::binary) << text;
        return;
    }
    EXPECT_EQ(text.substr(inner, to - inner), wanted)
        << document << " says something else; KELO_UPDATE_DOCS=1 has this test rewrite it";
}

/// Rewrites the block where that is asked for, and compares nothing: for figures that differ from
/// run to run.
inline void writeGeneratedBlock(const std::string& document, const std::string& name,
                                const std::string& lines) {
    if (std::getenv("KELO_UPDATE_DOCS") != nullptr) {
        expectGeneratedBlock(document, name, lines);
    }
}

} // namespace KeloAPI::testing
