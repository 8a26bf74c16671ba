// Every typedstream inside the real-world .qtz corpus: node userInfo,
// published-port userInfo, timeline colours, template images. All must
// decode, and all must re-encode byte for byte.

#include "plist/LegacyArchive.h"
#include "plist/PropertyList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iostream>

namespace plist::legacy {
namespace {

struct FoundArchive {
    std::string file;
    std::string path;  // keys and indices from the file's root
    std::string bytes;
};

void collectArchives(const Value& value, const std::string& file, const std::string& path, std::vector<FoundArchive>& out)
{
    if (value.isData() && isArchive(value.dataBytes())) {
        out.push_back({file, path, value.dataBytes()});
    } else if (value.isDictionary()) {
        for (const auto& [key, child] : value.dictionary()) collectArchives(child, file, path + "/" + key.str(), out);
    } else if (value.isArray()) {
        for (std::size_t i = 0; i < value.array().size(); ++i)
            collectArchives(value.array()[i], file, path + "/" + std::to_string(i), out);
    }
}

const std::vector<FoundArchive>& corpusArchives(std::size_t* fileCount = nullptr)
{
    static std::size_t files = 0;
    static const std::vector<FoundArchive> archives = [] {
        std::vector<std::filesystem::path> paths;
        for (const auto& entry : std::filesystem::directory_iterator(VELLORAN_CORPUS_DIR))
            if (entry.path().extension() == ".qtz") paths.push_back(entry.path());
        std::sort(paths.begin(), paths.end());
        std::vector<FoundArchive> found;
        for (const auto& path : paths) {
            std::string error;
            const auto root = readFile(path.string(), &error);
            EXPECT_TRUE(root.has_value()) << path << ": " << error;
            if (root) collectArchives(*root, path.filename().string(), "", found);
            ++files;
        }
        return found;
    }();
    if (fileCount) *fileCount = files;
    return archives;
}

// Strings, numbers, points and containers of those: the content whose
// re-encoding the format notes report as byte-identical.
bool isPlain(const Object& object)
{
    switch (object.kind()) {
    case ObjectKind::String: return !object.isMutable();
    case ObjectKind::Number: return true;
    case ObjectKind::Value: return object.isPoint();
    case ObjectKind::Array: return std::all_of(object.elements().begin(), object.elements().end(), isPlain);
    case ObjectKind::Dictionary:
        return std::all_of(object.entries().begin(), object.entries().end(),
                           [](const Entry& e) { return isPlain(e.first) && isPlain(e.second); });
    default: return false;
    }
}

std::string lastKey(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

TEST(LegacyArchiveCorpus, DecodesAndReencodesEveryArchive)
{
    std::size_t files = 0;
    const auto& archives = corpusArchives(&files);
    EXPECT_EQ(files, 57u);
    ASSERT_FALSE(archives.empty());

    std::size_t decoded = 0, identical = 0, plain = 0, plainIdentical = 0, bigEndian = 0;
    for (const FoundArchive& found : archives) {
        std::string error;
        const auto archive = decode(found.bytes, &error);
        EXPECT_TRUE(archive.has_value()) << found.file << " " << found.path << ": " << error;
        if (!archive) continue;
        ++decoded;
        bigEndian += archive->order == ByteOrder::BigEndian;
        const bool same = encode(*archive) == found.bytes;
        identical += same;
        if (isPlain(archive->root)) {
            ++plain;
            plainIdentical += same;
        }
        EXPECT_TRUE(same) << found.file << " " << found.path << ": " << archive->root.describe();
    }
    EXPECT_EQ(decoded, archives.size());
    EXPECT_EQ(plainIdentical, plain);
    EXPECT_GT(bigEndian, 0u);
    std::cout << "[ corpus   ] " << archives.size() << " archives in " << files << " files: " << decoded
              << " decoded, " << identical << " re-encoded identically (" << plainIdentical << " of " << plain
              << " plain), " << bigEndian << " big-endian\n";
}

TEST(LegacyArchiveCorpus, ArchivesHoldWhatTheEditorExpects)
{
    std::size_t userInfos = 0, positions = 0, colors = 0;
    for (const FoundArchive& found : corpusArchives()) {
        const auto archive = decode(found.bytes);
        if (!archive) continue;  // reported above
        const std::string key = lastKey(found.path);
        const Object& root = archive->root;
        SCOPED_TRACE(found.file + " " + found.path);
        if (key == "userInfo") {
            ++userInfos;
            EXPECT_TRUE(root.isDictionary()) << root.describe();
            for (const char* pointKey : {"position", "scrolling"}) {
                if (const Object* point = root.find(pointKey)) {
                    ++positions;
                    EXPECT_TRUE(point->isPoint()) << point->describe();
                }
            }
            if (const Object* name = root.find("name")) {
                EXPECT_TRUE(name->isString()) << name->describe();
            }
        } else if (key == "color") {
            ++colors;
            EXPECT_TRUE(root.isColor()) << root.describe();
            const auto kind = root.colorKind();
            EXPECT_EQ(root.components().size(), kind <= ColorKind::DeviceRgba ? 4u : 2u) << root.describe();
        } else if (key == "templateImageData") {
            EXPECT_EQ(root.className(), "NSImage");
        }
    }
    EXPECT_GT(userInfos, 1000u);
    EXPECT_GT(positions, 1000u);
    EXPECT_GT(colors, 0u);
}

TEST(LegacyArchiveCorpus, RejectsEveryTruncationOfRealArchives)
{
    // The longest userInfo, the first big-endian one, a colour and an image.
    const auto& archives = corpusArchives();
    std::vector<const FoundArchive*> picks;
    const FoundArchive* longest = nullptr;
    for (const FoundArchive& found : archives) {
        const std::string key = lastKey(found.path);
        if (key == "userInfo" && (!longest || found.bytes.size() > longest->bytes.size())) longest = &found;
        const bool firstOfItsKind = std::none_of(picks.begin(), picks.end(), [&](const FoundArchive* p) {
            return lastKey(p->path) == key && p->bytes.compare(2, 11, found.bytes, 2, 11) == 0;
        });
        if (firstOfItsKind && (key == "color" || key == "templateImageData" ||
                               (key == "userInfo" && found.bytes.compare(2, 11, "typedstream") == 0)))
            picks.push_back(&found);
    }
    if (longest) picks.push_back(longest);
    ASSERT_GE(picks.size(), 4u);
    for (const FoundArchive* found : picks) {
        SCOPED_TRACE(found->file + " " + found->path);
        const std::size_t size = found->bytes.size();
        for (std::size_t length = 0; length < size; ++length) {
            // Inside a long image only the ends hold structure; sample the middle.
            if (size > 4096 && length > 512 && length + 512 < size && length % 97 != 0) continue;
            std::string error;
            ASSERT_FALSE(decode(std::string_view(found->bytes).substr(0, length), &error).has_value()) << length;
            ASSERT_NE(error.find(" at offset "), std::string::npos) << error;
        }
    }
}

}  // namespace
}  // namespace plist::legacy
