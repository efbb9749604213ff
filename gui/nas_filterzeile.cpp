#include "gui/nas_filterzeile.hpp"

#include "gui/qt_text.hpp"

#include <QHeaderView>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableView>

#include <algorithm>
#include <utility>

namespace flurix::gui {

NasFilterzeile::NasFilterzeile(QTableView& grid, QWidget* eltern)
    : QWidget(eltern), m_grid(grid), m_innen(new QWidget(this)) {
    setObjectName(QStringLiteral("Filterzeile"));
    QHeaderView* kopf = grid.horizontalHeader();
    connect(kopf, &QHeaderView::sectionResized, this, &NasFilterzeile::Anordnen);
    connect(kopf, &QHeaderView::sectionMoved, this, &NasFilterzeile::Anordnen);
    connect(kopf, &QHeaderView::geometriesChanged, this, &NasFilterzeile::Anordnen);
    connect(grid.horizontalScrollBar(), &QScrollBar::valueChanged, this, &NasFilterzeile::Anordnen);
    QLineEdit probe;
    setFixedHeight(probe.sizeHint().height());
}

void NasFilterzeile::SpaltenAnlegen() {
    for (QLineEdit* feld : m_felder)
        delete feld;
    m_felder.clear();
    const int spalten = m_grid.model() ? m_grid.model()->columnCount() : 0;
    for (int s = 0; s < spalten; ++s) {
        auto* feld = new QLineEdit(m_innen);
        feld->setObjectName(QStringLiteral("Filter_%1").arg(s));
        feld->setClearButtonEnabled(false);
        connect(feld, &QLineEdit::returnPressed, this, [this] {
            m_bearbeitet = false;
            emit filterAngefordert();
        });
        connect(feld, &QLineEdit::textEdited, this, [this] {
            if (!std::exchange(m_bearbeitet, true))
                emit bearbeitungBegonnen();
        });
        m_felder.push_back(feld);
    }
    m_bearbeitet = false;
    Anordnen();
}

std::vector<std::string> NasFilterzeile::Texte() const {
    std::vector<std::string> texte;
    for (const QLineEdit* feld : m_felder)
        texte.push_back(Utf8(feld->text()));
    return texte;
}

void NasFilterzeile::Leeren() {
    for (QLineEdit* feld : m_felder)
        feld->clear();
    m_bearbeitet = false;
}

QLineEdit* NasFilterzeile::Feld(int spalte) const {
    return spalte >= 0 && static_cast<std::size_t>(spalte) < m_felder.size()
               ? m_felder[static_cast<std::size_t>(spalte)]
               : nullptr;
}

void NasFilterzeile::resizeEvent(QResizeEvent* ereignis) {
    QWidget::resizeEvent(ereignis);
    Anordnen();
}

void NasFilterzeile::Anordnen() {
    const QHeaderView* kopf = m_grid.horizontalHeader();
    // The columns start right of the row numbers, inside the grid's frame; an edit scrolled to
    // the left is cut there, as its column is.
    const int links = m_grid.frameWidth() +
                      (m_grid.verticalHeader()->isVisible() ? m_grid.verticalHeader()->width() : 0);
    m_innen->setGeometry(links, 0, std::max(0, m_grid.viewport()->width()), height());
    for (std::size_t s = 0; s < m_felder.size(); ++s) {
        const int spalte = static_cast<int>(s);
        QLineEdit* feld = m_felder[s];
        if (kopf->isSectionHidden(spalte)) {
            feld->hide();
            continue;
        }
        feld->setGeometry(kopf->sectionViewportPosition(spalte), 0, kopf->sectionSize(spalte),
                          height());
        feld->show();
    }
}

} // namespace flurix::gui
