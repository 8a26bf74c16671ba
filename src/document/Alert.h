#pragma once
// What a command has to tell the user: the document shows it as a sheet
// with one "Ok" button. The command itself never touches a window.

#include <QString>

namespace document {

struct Alert {
    QString title;
    QString text;
    // The preference under which the user can turn this alert off; empty
    // when it cannot be turned off.
    QString suppressionKey;

    bool operator==(const Alert&) const = default;
};

}  // namespace document
