#pragma once

#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace KeloAPI::testing {

/// From which the platform counts its dates.
inline constexpr Date referenceDate = std::chrono::sys_days(std::chrono::January / 1 / 2001);

/// Has an entry of every kind.
class Everything final : public Archivable {
public:
    static constexpr std::string_view archivedClassName = "Everything";

    std::optional<std::string> text;
    std::optional<URL> url;
    std::optional<Date> date;
    std::optional<Number> number;
    std::optional<Range> range;
    std::int64_t integer = 0;
    double real = 0;
    bool flag = false;
    std::shared_ptr<Everything> other;

    /// All but the other object.
    auto contents() const { return std::tie(text, url, date, number, range, integer, real, flag); }

    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }

    void encodeWithCoder(KeyedArchiver& coder) const override {
        coder.encodeText(text, "text");
        coder.encodeURL(url, "url");
        coder.encodeDate(date, "date");
        coder.encodeNumber(number, "number");
        coder.encodeRange(range, "range");
        coder.encodeInt64(integer, "integer");
        coder.encodeDouble(real, "real");
        coder.encodeBool(flag, "flag");
        coder.encodeObject(other, "other");
    }

    static std::shared_ptr<Everything> initWithCoder(KeyedUnarchiver& coder) {
        auto object = std::make_shared<Everything>();
        object->text = coder.decodeText("text");
        object->url = coder.decodeURL("url");
        object->date = coder.decodeDate("date");
        object->number = coder.decodeNumber("number");
        object->range = coder.decodeRange("range");
        object->integer = coder.decodeInt64("integer");
        object->real = coder.decodeDouble("real");
        object->flag = coder.decodeBool("flag");
        object->other = coder.decodeObject<Everything>("other");
        return object;
    }
};

/// The archived class `Everything` for classes that are only read.
class ReadOnly : public Archivable {
public:
    static constexpr std::string_view archivedClassName = Everything::archivedClassName;
    std::vector<std::string_view> archivedClassNames() const override { return {}; }
    void encodeWithCoder(KeyedArchiver& /*coder*/) const override {}
};

/// One of a graph of objects. Needs its name.
class Node : public Archivable {
public:
    static constexpr std::string_view archivedClassName = "Node";

    explicit Node(std::string text)
        : name(std::move(text)) {}

    std::string name;
    std::shared_ptr<Node> left;
    std::shared_ptr<Node> right;

    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }

    void encodeWithCoder(KeyedArchiver& coder) const override {
        coder.encodeText(name, "name");
        coder.encodeObject(left, "left");
        coder.encodeObject(right, "right");
    }

    static std::shared_ptr<Node> initWithCoder(KeyedUnarchiver& coder) {
        const auto text = coder.decodeText("name");
        auto left = coder.decodeObject<Node>("left");
        auto right = coder.decodeObject<Node>("right");
        if (!text) {
            return nullptr;
        }
        auto node = std::make_shared<Node>(*text);
        node->left = std::move(left);
        node->right = std::move(right);
        return node;
    }
};

/// A node that an archive knows as one of a class of its own.
class SpecialNode final : public Node {
public:
    using Node::Node;
    std::vector<std::string_view> archivedClassNames() const override {
        return {"SpecialNode", archivedClassName};
    }
};

} // namespace KeloAPI::testing
