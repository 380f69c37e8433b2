// Keeps a channel and a draft of the host's own in files that phones read, too, and reads them
// back.
//
//     example-archives FOLDER
#include <KeloAPI/KeloAPI.hpp>

#include <fstream>
#include <iostream>
#include <iterator>

using namespace KeloAPI;

namespace {

/// A post that is not published yet: a class of the host's own that can be kept.
class Draft final : public Archivable {
public:
    std::string caption;
    std::optional<Date> begun;
    /// Null before the user has chosen one.
    std::shared_ptr<KLChannel> channel;

    static constexpr std::string_view archivedClassName = "Draft";
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    void encodeWithCoder(KeyedArchiver& coder) const override {
        coder.encodeText(caption, "caption");
        coder.encodeDate(begun, "begun");
        coder.encodeObject(channel, "channel");
    }
    /// Null refuses the archive: a draft without a caption is none.
    static std::shared_ptr<Draft> initWithCoder(KeyedUnarchiver& coder) {
        auto caption = coder.decodeText("caption");
        if (!caption) {
            return nullptr;
        }
        auto draft = std::make_shared<Draft>();
        draft->caption = std::move(*caption);
        draft->begun = coder.decodeDate("begun");
        draft->channel = coder.decodeObject<KLChannel>("channel");
        return draft;
    }
};

bool save(const std::string& path, const std::shared_ptr<const Archivable>& object) {
    std::ofstream file(path, std::ios::binary);
    file << KeyedArchiver::archivedData(object).text();
    return static_cast<bool>(file.flush());
}

template <Unarchivable T>
std::shared_ptr<T> load(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return KeyedUnarchiver::unarchive<T>(
        Data(std::string(std::istreambuf_iterator<char>(file), {})));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "example-archives FOLDER\n";
        return 2;
    }
    const std::string folder = argv[1];
    const auto channel = std::make_shared<KLChannel>("7", "Dance", "ffffff", "e04080");
    const auto draft = std::make_shared<Draft>();
    draft->caption = "The loop is seamless";
    draft->begun = Date::now();
    draft->channel = channel;
    if (!save(folder + "/channel", channel) || !save(folder + "/draft", draft)) {
        std::cerr << "Nothing can be written there.\n";
        return 1;
    }

    const auto readChannel = load<KLChannel>(folder + "/channel");
    const auto readDraft = load<Draft>(folder + "/draft");
    if (!readChannel || !readDraft || !readDraft->channel) {
        std::cerr << "The files do not hold what was saved.\n";
        return 1;
    }
    std::cout << readChannel->name << '\n'
              << readDraft->caption << " (" << readDraft->channel->name << ")\n";
    // What is something else, or broken, is null: here a draft is no channel.
    return load<KLChannel>(folder + "/draft") ? 1 : 0;
}
