#pragma once
// The colours of \colortbl by index. An entry without components (the usual
// first one, ";") is the automatic colour: text keeps no foreground.

#include <QColor>

#include <optional>
#include <vector>

namespace rtf {

class ColourTable {
public:
    void setRed(int value) { m_red = clampComponent(value), m_hasComponents = true; }
    void setGreen(int value) { m_green = clampComponent(value), m_hasComponents = true; }
    void setBlue(int value) { m_blue = clampComponent(value), m_hasComponents = true; }

    // The ';' that ends an entry.
    void finish()
    {
        m_colours.push_back(m_hasComponents ? std::optional<QColor>(QColor(m_red, m_green, m_blue)) : std::nullopt);
        m_red = m_green = m_blue = 0;
        m_hasComponents = false;
    }

    std::optional<QColor> find(int index) const
    {
        if (index < 0 || size_t(index) >= m_colours.size()) return std::nullopt;
        return m_colours[size_t(index)];
    }

private:
    static int clampComponent(int value) { return value < 0 ? 0 : value > 255 ? 255 : value; }

    std::vector<std::optional<QColor>> m_colours;
    int m_red = 0, m_green = 0, m_blue = 0;
    bool m_hasComponents = false;
};

}  // namespace rtf
