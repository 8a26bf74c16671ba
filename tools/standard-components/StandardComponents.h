#pragma once
// The composition files the program itself instantiates (the export's
// "Renderer", "Background", "MovieBackground", "FPS"), the components of the
// toolbar and of paste, and the toolbar's list, all built with the quartz
// module. resources/standard-components holds their committed output.

#include <QByteArray>
#include <QString>

#include <vector>

namespace standardcomponents {

struct GeneratedFile {
    QString name;  // file name in the folder, e.g. "Renderer.qtz"
    QByteArray data;
};

// Every file of the folder, in a fixed order; empty with an error when one
// cannot be serialised.
std::vector<GeneratedFile> generateAll(QString* error = nullptr);

// Writes every file into `folder` (made when missing).
bool writeAll(const QString& folder, QString* error = nullptr);

}  // namespace standardcomponents
