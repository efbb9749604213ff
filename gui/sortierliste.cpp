#include "gui/sortierliste.hpp"

#include <algorithm>

namespace flurix::gui {

bool Sortierliste::Hinzufügen(std::string_view schlüssel) {
    if (schlüssel.empty() ||
        std::find(m_schlüssel.begin(), m_schlüssel.end(), schlüssel) != m_schlüssel.end())
        return false;
    m_schlüssel.emplace_back(schlüssel);
    return true;
}

void Sortierliste::LetzteEntfernen() {
    if (!m_schlüssel.empty())
        m_schlüssel.pop_back();
}

std::string Sortierliste::Text() const {
    std::string text;
    for (const std::string& s : m_schlüssel) {
        if (!text.empty())
            text += ',';
        text += s;
    }
    return text;
}

} // namespace flurix::gui
