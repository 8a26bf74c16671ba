#include "canvas/VLAlignmentController.h"

#include "document/DocumentCommands.h"

#include <QGuiApplication>

namespace canvas {

namespace {
constexpr int kModeForTag[12] = {0, 1, 2, 3, 4, 5, 9, 10, 11, 6, 7, 8};
}

const std::vector<AlignmentItem>& VLAlignmentController::items()
{
    // Each item's tag is the one whose mode does what its title says.
    static const std::vector<AlignmentItem> list = {
        {tagForMode(0), QStringLiteral("Align Left Edges"), QStringLiteral("Align Left"), false},
        {tagForMode(1), QStringLiteral("Align Horizontal Centers"), QStringLiteral("Align HCenter"), false},
        {tagForMode(2), QStringLiteral("Align Right Edges"), QStringLiteral("Align Right"), false},
        {tagForMode(3), QStringLiteral("Align Top Edges"), QStringLiteral("Align Top"), false},
        {tagForMode(4), QStringLiteral("Align Vertical Centers"), QStringLiteral("Align VCenter"), false},
        {tagForMode(5), QStringLiteral("Align Bottom Edges"), QStringLiteral("Align Bottom"), false},
        {tagForMode(6), QStringLiteral("Distribute Left Edges"), QStringLiteral("Distribute Left"), true},
        {tagForMode(7), QStringLiteral("Distribute Horizontal Centers"), QStringLiteral("Distribute HCenter"), true},
        {tagForMode(8), QStringLiteral("Distribute Right Edges"), QStringLiteral("Distribute Right"), true},
        {tagForMode(9), QStringLiteral("Distribute Top Edges"), QStringLiteral("Distribute Top"), true},
        {tagForMode(10), QStringLiteral("Distribute Vertical Centers"), QStringLiteral("Distribute VCenter"), true},
        {tagForMode(11), QStringLiteral("Distribute Bottom Edges"), QStringLiteral("Distribute Bottom"), true},
    };
    return list;
}

int VLAlignmentController::modeForTag(int tag) { return tag >= 0 && tag < 12 ? kModeForTag[tag] : -1; }

int VLAlignmentController::tagForMode(int mode)
{
    for (int tag = 0; tag < 12; ++tag)
        if (kModeForTag[tag] == mode) return tag;
    return -1;
}

void VLAlignmentController::executeTag(int tag) const
{
    const int mode = modeForTag(tag);
    if (mode < 0) return;
    callDocumentAlign(mode, QGuiApplication::keyboardModifiers() & Qt::ShiftModifier);
}

void VLAlignmentController::callDocumentAlign(int mode, bool anchorToFirstSelected) const
{
    if (document::DocumentCommands* commands = mainDocument_ ? mainDocument_() : nullptr)
        commands->doAlignComponents(mode, anchorToFirstSelected);
}

}  // namespace canvas
