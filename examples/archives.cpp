// Keeps a channel, a draft of the host's own and a list in files that phones read, too, and reads
// them back.
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

bool save(const std::string& path, const Data& archive) {
    std::ofstream file(path, std::ios::binary);
    file << archive.text();
    return static_cast<bool>(file.flush());
}

/// Empty where the file cannot be read, which the unarchiver refuses as well.
Data load(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return Data(std::string(std::istreambuf_iterator<char>(file), {}));
}

bool saveAll(const std::string& folder) {
    const auto channel = std::make_shared<KLChannel>("7", "Dance", "ffffff", "e04080");
    const auto draft = std::make_shared<Draft>();
    draft->caption = "The loop is seamless";
    draft->begun = Date::now();
    draft->channel = channel;
    const std::vector<std::shared_ptr<KLTag>> tags = {std::make_shared<KLTag>("5", "dance"),
                                                      std::make_shared<KLTag>("6", "loop")};
    return save(folder + "/channel", KeyedArchiver::archivedData(channel)) &&
           save(folder + "/draft", KeyedArchiver::archivedData(draft)) &&
           save(folder + "/tags", KeyedArchiver::archivedData(tags));
}

bool printAll(const std::string& folder) {
    const auto channel = KeyedUnarchiver::unarchive<KLChannel>(load(folder + "/channel"));
    const auto draft = KeyedUnarchiver::unarchive<Draft>(load(folder + "/draft"));
    const auto tags = KeyedUnarchiver::unarchiveList<KLTag>(load(folder + "/tags"));
    if (!channel || !draft || !draft->channel || !tags) {
        return false;
    }
    std::cout << channel->name << '\n' << draft->caption << " (" << draft->channel->name << ")\n";
    for (const auto& tag : *tags) {
        std::cout << tag->name << '\n';
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "example-archives FOLDER\n";
        return 2;
    }
    const std::string folder = argv[1];
    if (!saveAll(folder)) {
        std::cerr << "Nothing can be written there.\n";
        return 1;
    }
    if (!printAll(folder)) {
        std::cerr << "The files do not hold what was saved.\n";
        return 1;
    }
    // Null where the file holds something else or is damaged: here, a draft.
    return KeyedUnarchiver::unarchive<KLChannel>(load(folder + "/draft")) ? 1 : 0;
}
