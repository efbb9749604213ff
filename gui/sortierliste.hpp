#pragma once
// The sort list of the multi-sort (btnMehrfachsortierung): header clicks build a comma-joined list
// of column keys, which the table is sorted by, ascending.

#include <string>
#include <string_view>
#include <vector>

namespace flurix::gui {

class Sortierliste {
public:
    /// A left click on a header: the column's key goes to the end of the list. A key the list
    /// holds already is not added again, as a second key of the same column can't change the
    /// order; returns false then.
    bool Hinzufügen(std::string_view schlüssel);
    /// A right click on a header: the last key comes off. An empty list stays empty.
    void LetzteEntfernen();
    void Leeren() { m_schlüssel.clear(); }
    bool Leer() const { return m_schlüssel.empty(); }
    /// The keys joined with ",", as Kataster::Sortieren takes them; "" for an empty list.
    std::string Text() const;

private:
    std::vector<std::string> m_schlüssel;
};

} // namespace flurix::gui
