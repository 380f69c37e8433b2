#include <KeloAPIObjC/bridge/Bytes.hpp>

#include <KeloAPIObjC/bridge/Pool.hpp>

#include <memory>
#include <span>

namespace KeloBridge {

KeloAPI::Data bytes(NSData *data) {
    NSData *kept = [data copy];
    const std::shared_ptr<const void> owner(kept, [](NSData *owned) {
        const Pool pool;
        [owned release];
    });
    const std::span<const char> characters(static_cast<const char *>([kept bytes]), [kept length]);
    return KeloAPI::Data(owner, std::as_bytes(characters));
}

NSData *bytes(const KeloAPI::Data &data) {
    return [NSData dataWithBytes:data.bytes().data() length:data.size()];
}

} // namespace KeloBridge
