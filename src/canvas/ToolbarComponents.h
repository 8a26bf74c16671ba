#pragma once
// The toolbar's list of standard components ("ToolbarComponents.plist")
// and how an entry becomes a component. Entries either add their
// composition file directly or, with a "type", fill one input with a file
// the user chooses first.

#include <QString>
#include <QStringList>

#include <vector>

namespace model {
class Composition;
}

namespace canvas {

struct ToolbarComponentEntry {
    QString identifier;
    QString title;
    QString component;  // a file of the standard components, without ".qtz"
    QString type;       // empty, "IMAGE" or "MOVIE_PATH"
    QString key;        // the input a chosen file fills
    QString icon;
    int width = 0;      // of a pull-down button; 0 means the standard 43
    bool separator = false;
    std::vector<ToolbarComponentEntry> subcomponents;

    bool hasSubcomponents() const { return !subcomponents.empty(); }
    int buttonWidth() const { return width > 0 ? width : 43; }
    bool asksForFile() const { return !type.isEmpty(); }
    // The input a chosen file fills: "Image" for images, "Movie_Path" for
    // movies unless the entry names its own.
    QString inputKey() const;
};

class ToolbarComponents {
public:
    // Entries of a list file; empty (with a log line) when it cannot be read.
    static std::vector<ToolbarComponentEntry> load(const QString& path);
    // The application's list, read once.
    static const std::vector<ToolbarComponentEntry>& toolbarComponents();

    static QString flexibleSpaceIdentifier() { return QStringLiteral("FlexibleSpace"); }
    static QString spaceIdentifier() { return QStringLiteral("Space"); }
    static QStringList componentIdentifiers(const std::vector<ToolbarComponentEntry>& entries);
    // Align, distribute, stacking, zoom, stop and poster frame, preview,
    // with the spaces between them.
    static QStringList standardIdentifiers();
    // The component identifiers followed by the standard ones.
    static QStringList allIdentifiers(const std::vector<ToolbarComponentEntry>& entries);
};

// Adds what an entry stands for: its standard component titled after the
// entry, or, for an entry that asks for a file, the component filled with
// the chosen file (a Photoshop file brings in its layers). One undo step;
// answers how many components were added.
int addToolbarComponent(model::Composition& composition, const ToolbarComponentEntry& entry,
                        const QString& chosenPath = QString());

}  // namespace canvas
