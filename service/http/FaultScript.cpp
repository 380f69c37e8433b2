#include "service/http/FaultScript.hpp"

#include <fstream>
#include <iterator>

namespace KeloService {
namespace {

std::string optionalText(const Json& match, const char* key) {
    const Json value = match.value(key, Json(""));
    if (!value.is_string()) {
        throw FaultScriptError(std::string("match.") + key + " must be a text");
    }
    return value.get<std::string>();
}

int optionalCount(const Json& fault, const char* key, int otherwise) {
    const Json value = fault.value(key, Json(otherwise));
    if (!value.is_number_integer() || value < 0 || value > 1000000000) {
        throw FaultScriptError(std::string(key) + " must be an integer, 0 or more");
    }
    return value.get<int>();
}

std::shared_ptr<Fault> parseFault(const Json& source) {
    if (!source.is_object()) {
        throw FaultScriptError("must be an object");
    }
    for (const auto& [key, value] : source.items()) {
        if (key != "match" && key != "times" && key != "skip" && key != "action") {
            throw FaultScriptError("key " + key + " is not known");
        }
    }
    const Json match = source.value("match", Json::object());
    if (!match.is_object()) {
        throw FaultScriptError("match must be an object");
    }
    auto fault = std::make_shared<Fault>();
    fault->source = source;
    fault->method = optionalText(match, "method");
    fault->path = optionalText(match, "path");
    fault->times = optionalCount(source, "times", 1);
    fault->skip = optionalCount(source, "skip", 0);
    fault->action = parseFaultAction(source.value("action", Json()));
    return fault;
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

bool Fault::matches(const Request& request) const {
    if (!method.empty() && method != request.method) {
        return false;
    }
    if (path.ends_with('*')) {
        return request.path().starts_with(std::string_view(path).substr(0, path.size() - 1));
    }
    return path.empty() || path == request.path();
}

std::vector<int> FaultScript::add(const Json& faultOrList) {
    const Json list = faultOrList.is_array() ? faultOrList : Json::array({faultOrList});
    std::vector<std::shared_ptr<Fault>> parsed;
    for (const Json& fault : list) {
        try {
            parsed.push_back(parseFault(fault));
        } catch (const FaultScriptError& error) {
            throw FaultScriptError("fault " + std::to_string(parsed.size() + 1) + ": " +
                                   error.what());
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

std::shared_ptr<Fault> FaultScript::take(const Request& request) {
    if (request.isControl()) {
        return nullptr;
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
        return fault;
    }
    return nullptr;
}

Json FaultScript::list() const {
    Json list = Json::array();
    const std::lock_guard lock(mutex_);
    for (const auto& fault : faults_) {
        Json entry{{"id", fault->id}};
        entry.update(fault->source);
        entry["skipped"] = fault->skipped;
        entry["taken"] = fault->taken;
        entry["fired"] = fault->fired.load();
        list.push_back(entry);
    }
    return list;
}

void FaultScript::clear() {
    const std::lock_guard lock(mutex_);
    faults_.clear();
}

} // namespace KeloService
