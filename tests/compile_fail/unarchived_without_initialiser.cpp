// expect: no matching function .*unarchive
#include <KeloAPI/platform/archive/KeyedArchiver.hpp>
#include <KeloAPI/platform/archive/KeyedUnarchiver.hpp>

using namespace KeloAPI;

class Model final : public Archivable {
public:
    static constexpr std::string_view archivedClassName = "Model";
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    void encodeWithCoder(KeyedArchiver& coder) const override { coder.encodeInt64(1, "a"); }
#ifndef FORBIDDEN
    static std::shared_ptr<Model> initWithCoder(KeyedUnarchiver& coder);
#endif
};

std::shared_ptr<Model> restored(const Data& archive) {
    return KeyedUnarchiver::unarchive<Model>(archive);
}
