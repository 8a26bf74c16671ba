#pragma once
// Data decoded once per loaded composition and shared by all its renderers:
// the images embedded in the file.

#include "runtime/Image.h"

#include "plist/Value.h"

#include <QString>

#include <map>
#include <mutex>
#include <string>

namespace runtime {

class CompositionResources {
public:
    explicit CompositionResources(QString directory = {}) : directory_(std::move(directory)) {}

    // Decodes embedded image bytes (a data value) once. The cache keeps the
    // value, so its identity cannot be reused by other bytes while cached.
    Image embeddedImage(const plist::Value& data) const;
    const QString& directory() const { return directory_; }

private:
    QString directory_;
    mutable std::mutex mutex_;
    mutable std::map<const void*, std::pair<plist::Value, Image>> images_;
};

}  // namespace runtime
