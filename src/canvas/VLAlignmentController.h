#pragma once
// Routes the align and distribute controls and menu items to the document.
// Controls carry tags 0–11; the tag chooses the document's align mode
// through a fixed table (the distribute tags are not in mode order).

#include <QString>

#include <functional>
#include <vector>

namespace document {
class DocumentCommands;
}

namespace canvas {

// One align or distribute command as the menus and the toolbar show it.
struct AlignmentItem {
    int tag;
    QString title;
    QString imageName;  // for ToolbarArtwork
    bool distributes;
};

class VLAlignmentController {
public:
    // The six align items, then the six distribute items, each group in the
    // order left, horizontal centre, right, top, vertical centre, bottom.
    static const std::vector<AlignmentItem>& items();

    using CommandsProvider = std::function<document::DocumentCommands*()>;
    explicit VLAlignmentController(CommandsProvider mainDocument) : mainDocument_(std::move(mainDocument)) {}

    // The align mode of a tag, or -1 for a tag outside 0–11.
    static int modeForTag(int tag);
    // The tag that runs a mode: the inverse of modeForTag.
    static int tagForMode(int mode);
    // Aligns by the tag's mode; Shift held anchors to the first selected.
    void executeTag(int tag) const;
    void callDocumentAlign(int mode, bool anchorToFirstSelected) const;

private:
    CommandsProvider mainDocument_;
};

}  // namespace canvas
