#include "gui/flurstuecksliste_dialog.hpp"

#include "core/markierung.hpp"
#include "gui/dateifilter.hpp"
#include "gui/qt_text.hpp"

#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>

namespace flurix::gui {

QString ListenformatText() {
    QStringList zeilen;
    for (std::string_view zeile : FlurstückslisteHinweis)
        zeilen << QText(zeile);
    return zeilen.join(u'\n');
}

QString FlurstückslisteÖffnen(QWidget* eltern, const QString& startordner) {
    QFileDialog dialog(eltern, QStringLiteral("Flurstücksliste laden"), startordner);
    dialog.setObjectName(QStringLiteral("dlgFlurstuecksliste"));
    // Qt's own dialog: a platform dialog has no room for the text of the format.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setNameFilters(QtDateifilterListe(FlurstückslisteFilter));

    auto* format = new QLabel(ListenformatText(), &dialog);
    format->setObjectName(QString::fromUtf8(ListenformatName));
    format->setTextInteractionFlags(Qt::TextSelectableByMouse);
    format->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    format->setMargin(6);
    if (auto* raster = qobject_cast<QGridLayout*>(dialog.layout()))
        raster->addWidget(format, raster->rowCount(), 0, 1, raster->columnCount());
    else if (dialog.layout())
        dialog.layout()->addWidget(format);

    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    return dialog.selectedFiles().front();
}

QString FlurstückslisteSpeichern(QWidget* eltern, const QString& startordner) {
    return QFileDialog::getSaveFileName(eltern, QStringLiteral("Markierte Flurstücke speichern"),
                                        startordner, QtDateifilter("FKZ (*.lst)|*.lst|"));
}

} // namespace flurix::gui
