#pragma once

#include "service/http/FaultAction.hpp"
#include "service/http/Request.hpp"

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace KeloService {

/// The faults that wait for requests, in order. Safe to use from any thread.
class FaultScript {
    struct Fault;

public:
    /// A fault that has chosen its request.
    class Taken {
    public:
        const FaultAction& action() const;
        /// Says that the action really happens now.
        void countFired() const;

    private:
        friend class FaultScript;
        Taken(FaultScript& script, std::shared_ptr<Fault> fault)
            : script_(&script)
            , fault_(std::move(fault)) {}
        FaultScript* script_;
        std::shared_ptr<Fault> fault_;
    };

    /// Adds one fault, or each of a list; all of them or, when one is wrong, none. Returns the ids.
    /// Throws FaultScriptError.
    std::vector<int> add(const Json& faultOrList);
    /// Adds the faults of a JSON file. Throws FaultScriptError naming the file.
    void addFile(const std::string& file);
    /// The first fault that applies to this request, if any does. Control requests have none.
    std::optional<Taken> take(const Request& request);
    Json list() const;
    void clear();

private:
    static std::shared_ptr<Fault> parse(const Json& fault);

    mutable std::mutex mutex_;
    std::vector<std::shared_ptr<Fault>> faults_;
    int lastId_ = 0;
};

} // namespace KeloService
