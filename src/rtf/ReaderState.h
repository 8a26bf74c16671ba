#pragma once
// What each RTF group carries: entering a group copies the state, leaving
// it restores the outer one. That is how "{\b bold} plain" ends the bold.

#include <Qt>

namespace rtf {

struct CharacterState {
    int font = -1;        // \fN; -1 until set: the \deff font applies
    int halfPoints = 24;  // \fsN; RTF's default is 12 pt
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strike = false;
    bool hidden = false;  // \v: text that is not shown
    int colour = 0;       // \cfN; 0 is the automatic colour

    bool operator==(const CharacterState&) const = default;
};

enum class Destination {
    Body,         // document text
    FontTable,
    ColourTable,
    Skip,         // a destination whose content we drop
};

struct GroupState {
    CharacterState character;
    Qt::Alignment alignment = Qt::AlignLeft;
    Destination destination = Destination::Body;
    int unicodeSkip = 1;  // \ucN: fallback characters after each \uN
};

}  // namespace rtf
