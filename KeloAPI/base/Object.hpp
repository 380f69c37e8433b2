#pragma once

#include <KeloAPI/base/Export.hpp>

namespace KeloAPI {

/// Common root of the model classes. Models are reference types: they are made and shared as
/// `std::shared_ptr`, are never copied, and are the same object exactly when the pointers are
/// equal.
class KELO_API Object {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object();

protected:
    Object() = default;
};

} // namespace KeloAPI
