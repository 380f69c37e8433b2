#include "service/http/FaultScript.hpp"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace KeloService {

struct FaultScript::Fault {
    int id = 0;
    Json source;
    std::string method;
    std::string path;
    /// How many requests it applies to; 0 means all.
    int times = 1;
    int skip = 0;
    FaultAction action;
    int skipped = 0;
    int taken = 0;
    int fired = 0;

    bool matches(const Request& request) const {
        if (!method.empty() && method != request.method) {
            return false;
        }
        if (path.ends_with('*')) {
            return request.path().starts_with(std::string_view(path).substr(0, path.size() - 1));
        }
        return path.empty() || path == request.path();
    }
};

namespace {

std::string optionalText(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end()) {
        return {};
    }
    if (!found->is_string()) {
        throw FaultScriptError(std::string("match.") + key + " must be a text");
    }
    return found->get<std::string>();
}

int optionalCount(const Json& object, const char* key, int otherwise) {
    const auto found = object.find(key);
    if (found == object.end()) {
        return otherwise;
    }
    if (!found->is_number_integer() || *found < 0 || *found > 1000000000) {
        throw FaultScriptError(std::string(key) + " must be an integer, 0 or more");
    }
    return found->get<int>();
}

std::string readFile(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string text;
    try {
        // A folder opens like a file; reading it then throws.
        text.assign(std::istreambuf_iterator<char>(stream), {});
    } catch (const std::ios_base::failure&) {
        stream.setstate(std::ios::badbit);
    }
    if (!stream) {
        throw FaultScriptError("cannot read the faults file " + file);
    }
    return text;
}

} // namespace

const FaultAction& FaultScript::Taken::action() const {
    return fault_->action;
}

void FaultScript::Taken::countFired() const {
    const std::lock_guard lock(script_->mutex_);
    ++fault_->fired;
}

std::shared_ptr<FaultScript::Fault> FaultScript::parse(const Json& source) {
    if (!source.is_object()) {
        throw FaultScriptError("must be an object");
    }
    for (const auto& [key, value] : source.items()) {
        if (key != "match" && key != "times" && key != "skip" && key != "action") {
            throw FaultScriptError("key " + key + " is not known");
        }
    }
    auto fault = std::make_shared<Fault>();
    fault->source = source;
    if (const auto match = source.find("match"); match != source.end()) {
        if (!match->is_object()) {
            throw FaultScriptError("match must be an object");
        }
        fault->method = optionalText(*match, "method");
        fault->path = optionalText(*match, "path");
    }
    fault->times = optionalCount(source, "times", 1);
    fault->skip = optionalCount(source, "skip", 0);
    fault->action = parseFaultAction(source.contains("action") ? source.at("action") : Json());
    return fault;
}

std::vector<int> FaultScript::add(const Json& faultOrList) {
    const Json list = faultOrList.is_array() ? faultOrList : Json::array({faultOrList});
    std::vector<std::shared_ptr<Fault>> parsed;
    for (std::size_t i = 0; i < list.size(); ++i) {
        try {
            parsed.push_back(parse(list[i]));
        } catch (const FaultScriptError& error) {
            throw FaultScriptError("fault " + std::to_string(i + 1) + ": " + error.what());
        }
    }
    std::vector<int> ids;
    const std::lock_guard lock(mutex_);
    for (auto& fault : parsed) {
        fault->id = ++lastId_;
        ids.push_back(fault->id);
        faults_.push_back(std::move(fault));
    }
    return ids;
}

void FaultScript::addFile(const std::string& file) {
    const Json script = Json::parse(readFile(file), nullptr, false);
    if (script.is_discarded()) {
        throw FaultScriptError("the faults file " + file + " is no JSON");
    }
    try {
        add(script);
    } catch (const FaultScriptError& error) {
        throw FaultScriptError("the faults file " + file + ": " + error.what());
    }
}

std::optional<FaultScript::Taken> FaultScript::take(const Request& request) {
    if (request.isControl()) {
        return std::nullopt;
    }
    const std::lock_guard lock(mutex_);
    for (const auto& fault : faults_) {
        if (!fault->matches(request) || (fault->times != 0 && fault->taken == fault->times)) {
            continue;
        }
        if (fault->skipped < fault->skip) {
            ++fault->skipped;
            continue;
        }
        ++fault->taken;
        return Taken(*this, fault);
    }
    return std::nullopt;
}

Json FaultScript::list() const {
    Json list = Json::array();
    const std::lock_guard lock(mutex_);
    for (const auto& fault : faults_) {
        Json entry{{"id", fault->id}};
        entry.update(fault->source);
        entry["skipped"] = fault->skipped;
        entry["taken"] = fault->taken;
        entry["fired"] = fault->fired;
        list.push_back(entry);
    }
    return list;
}

void FaultScript::clear() {
    const std::lock_guard lock(mutex_);
    faults_.clear();
}

} // namespace KeloService
