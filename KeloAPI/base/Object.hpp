#pragma once

#include <KeloAPI/base/Export.hpp>

#include <atomic>
#include <memory>

namespace KeloAPI {

/// Common root of the model classes. Models are reference types: they are made and shared as
/// `std::shared_ptr`, are never copied, and are the same object exactly when the pointers are
/// equal.
class KELO_API Object {
public:
    /// What a binding to another language keeps with an object, for instance that language's own
    /// object of it. The library neither makes companions nor asks them anything. There is one slot
    /// for it: at most one binding in a process can use it.
    class KELO_API Companion {
    public:
        Companion(const Companion&) = delete;
        Companion& operator=(const Companion&) = delete;
        virtual ~Companion();

    protected:
        Companion() = default;
    };

    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    /// Deletes the companion, on the thread that lets go of the object last. What derived classes
    /// hold has gone by then.
    virtual ~Object();

    /// Null while there is none. It stays until the object ends. Any thread.
    Companion* companion() const noexcept;
    /// Gives the object a companion, which it owns from then on, unless it has one: then `made` is
    /// deleted. Returns the one that it has afterwards. Any thread, several at a time included.
    Companion& attachCompanion(std::unique_ptr<Companion> made) const;
    /// Deletes the companion, if any, before the object is destroyed: for a deleter, or the
    /// destructor of the most derived class, where the companion may still use the object. Nobody
    /// else may have the object any more.
    void deleteCompanion() const noexcept;

protected:
    Object() = default;

private:
    mutable std::atomic<Companion*> _companion{nullptr};
};

} // namespace KeloAPI
