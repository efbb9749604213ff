// The grid's model over the cadastre table, its delegate, the sort list of the multi-sort and the
// column widths: what the view is told, what a cell shows, what a click and an edit do.

#include "core/katalog.hpp"
#include "core/kataster.hpp"
#include "core/markierung.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/spaltenansicht.hpp"
#include "gui/kataster_delegate.hpp"
#include "gui/kataster_modell.hpp"
#include "gui/qt_oberflaeche.hpp"
#include "gui/qt_text.hpp"
#include "gui/sortierliste.hpp"
#include "gui/spaltenbreiten.hpp"
#include "gui_testhilfen.hpp"

#include <QApplication>
#include <QBrush>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QTableView>

#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace flurix::gui {
namespace {

using test::Beantworter;

using Zellen = std::initializer_list<std::pair<std::string_view, std::string_view>>;

/// Adds a row whose named cells hold the given texts, all others empty.
void ZeileAnfügen(Kataster& kataster, Zellen zellen) {
    std::vector<std::string> texte(kataster.Spaltenzahl());
    for (const auto& [schlüssel, text] : zellen)
        texte[*kataster.SpaltenIndex(schlüssel)] = text;
    std::vector<std::string_view> ansicht(texte.begin(), texte.end());
    kataster.ZeileHinzufügen(ansicht);
}

/// A table of the catalogue with three parcels, and a model over it.
struct Modelltisch {
    Kataster kataster;
    Stempelnummerierung nummerierung;
    SkriptOberfläche ui;
    std::unique_ptr<KatasterModell> modell;

    Modelltisch() {
        SpaltenAnlegen(kataster);
        ZeileAnfügen(kataster, {{"Gemarkung", "Zehdenick"},
                                {"Flur", "007"},
                                {"Flurstück", "00231/0001"},
                                {"Name", "Müller-Lüdenscheidt, Jörg"}});
        ZeileAnfügen(kataster, {{"Gemarkung", "Mildenberg"},
                                {"Flur", "012"},
                                {"Flurstück", "00017/0000"},
                                {"Name", "Weiß, Käthe"}});
        ZeileAnfügen(kataster, {{"Gemarkung", "Badingen"},
                                {"Flur", "001"},
                                {"Flurstück", "00005/0002"},
                                {"Name", "Groß, Sören"}});
        modell = std::make_unique<KatasterModell>(kataster, nummerierung, ui);
    }

    QModelIndex Index(int zeile, std::string_view schlüssel) const {
        return modell->index(zeile, modell->Abschnitt(*kataster.SpaltenIndex(schlüssel)));
    }
    std::string Zelle(int zeile, std::string_view schlüssel) const {
        return std::string(kataster.Zelle(static_cast<std::size_t>(zeile), schlüssel));
    }
    /// Shows the columns of a ";" list, as a view does.
    void Ansicht(std::string_view liste) {
        KatasterModell::Umbau umbau(*modell);
        SpaltenlisteAnwenden(kataster, liste);
    }
};

/// Counts what the model tells its views.
struct Meldungen {
    int zurückgesetzt = 0;
    int eingefügt = 0;
    std::pair<int, int> zuletztEingefügt{-1, -1};
    std::vector<std::pair<QModelIndex, QModelIndex>> geändert;

    explicit Meldungen(const KatasterModell& modell) {
        QObject::connect(&modell, &QAbstractItemModel::modelReset, [this] { ++zurückgesetzt; });
        QObject::connect(&modell, &QAbstractItemModel::rowsInserted,
                         [this](const QModelIndex&, int erste, int letzte) {
                             ++eingefügt;
                             zuletztEingefügt = {erste, letzte};
                         });
        QObject::connect(
            &modell, &QAbstractItemModel::dataChanged,
            [this](const QModelIndex& a, const QModelIndex& b) { geändert.emplace_back(a, b); });
    }
};

// --- rows, columns, notifications ----------------------------------------------------------------

TEST(KatasterModell, ZeilenUndSpaltenFolgenTabelleUndAnsicht) {
    Modelltisch t;
    EXPECT_EQ(t.modell->rowCount(), 3);
    // Every column of the catalogue but the hidden NrStp, in the catalogue's order.
    EXPECT_EQ(t.modell->columnCount(), static_cast<int>(Katalog().size()) - 1);
    EXPECT_EQ(t.modell->Abschnitt(*t.kataster.SpaltenIndex("NrStp")), -1);
    EXPECT_EQ(t.modell->headerData(0, Qt::Horizontal).toString(), QStringLiteral("Landkreis"));

    Meldungen meldungen(*t.modell);
    t.Ansicht("Flurstück;Gemarkung;Gibtsnicht;checkdruck");
    EXPECT_EQ(meldungen.zurückgesetzt, 1);
    ASSERT_EQ(t.modell->columnCount(), 3);
    EXPECT_EQ(t.modell->headerData(0, Qt::Horizontal).toString(), QStringLiteral("Flurstück"));
    EXPECT_EQ(t.modell->headerData(1, Qt::Horizontal).toString(), QStringLiteral("Gemarkung"));
    EXPECT_EQ(t.modell->Spalte(2), t.kataster.SpaltenIndex("checkdruck"));
    EXPECT_EQ(t.modell->Spalte(3), std::nullopt);
    EXPECT_EQ(t.modell->index(1, 0).data().toString(), QStringLiteral("00017/0000"));
    EXPECT_EQ(t.modell->headerData(1, Qt::Vertical).toInt(), 2) << "rows are counted from 1";

    // Rows the view hasn't been told of yet aren't shown; the notice inserts them.
    ZeileAnfügen(t.kataster, {{"Flurstück", "00099/0000"}});
    ZeileAnfügen(t.kataster, {{"Flurstück", "00100/0000"}});
    EXPECT_EQ(t.modell->rowCount(), 3);
    t.modell->ZeilenAngefügt();
    EXPECT_EQ(t.modell->rowCount(), 5);
    EXPECT_EQ(meldungen.eingefügt, 1);
    EXPECT_EQ(meldungen.zuletztEingefügt, std::make_pair(3, 4));
    EXPECT_EQ(meldungen.zurückgesetzt, 1);
    EXPECT_EQ(t.modell->index(4, 0).data().toString(), QStringLiteral("00100/0000"));

    // Fewer rows are no append: the model is reset.
    const std::vector<std::size_t> weg{0, 1};
    t.kataster.ZeilenLöschen(weg);
    t.modell->ZeilenAngefügt();
    EXPECT_EQ(meldungen.zurückgesetzt, 2);
    EXPECT_EQ(t.modell->rowCount(), 3);
}

TEST(KatasterModell, ZellenänderungMeldetDieZellenOderBautUm) {
    Modelltisch t;
    Meldungen meldungen(*t.modell);
    t.kataster.ZelleSetzen(1, "Name", "Neu");
    t.modell->ZellenGeändert();
    ASSERT_EQ(meldungen.geändert.size(), 1U);
    EXPECT_EQ(meldungen.geändert[0].first, t.modell->index(0, 0));
    EXPECT_EQ(meldungen.geändert[0].second, t.modell->index(2, t.modell->columnCount() - 1));
    EXPECT_EQ(meldungen.zurückgesetzt, 0);
    // A column added by the work changes what is shown: then the model is reset.
    t.kataster.SpalteHinzufügen({"ID_GG", "ID_GG", 600});
    t.modell->ZellenGeändert();
    EXPECT_EQ(meldungen.zurückgesetzt, 1);
    EXPECT_EQ(t.modell->headerData(t.modell->columnCount() - 1, Qt::Horizontal).toString(),
              QStringLiteral("ID_GG"));
}

TEST(KatasterModell, UmbauBeiGeleertemKatasterLiestNieÜberDasEnde) {
    Modelltisch t;
    KatasterModell::Umbau umbau(*t.modell);
    t.kataster.Leeren();
    // Until the Umbau ends the view still counts the old rows and columns; they give nothing.
    EXPECT_EQ(t.modell->rowCount(), 3);
    EXPECT_FALSE(t.modell->index(2, 5).data().isValid());
    EXPECT_FALSE(t.modell->headerData(5, Qt::Horizontal).isValid());
    EXPECT_EQ(t.modell->flags(t.modell->index(0, 0)), Qt::NoItemFlags);
}

// --- what a cell shows ---------------------------------------------------------------------------

TEST(KatasterModell, ZellenZeigenIhrenTextMitUmlauten) {
    Modelltisch t;
    EXPECT_EQ(t.Index(0, "Name").data(Qt::DisplayRole).toString(),
              QStringLiteral("Müller-Lüdenscheidt, Jörg"));
    EXPECT_EQ(t.Index(0, "Name").data(Qt::EditRole).toString(),
              QStringLiteral("Müller-Lüdenscheidt, Jörg"));
    EXPECT_EQ(t.Index(1, "Gemarkung").data().toString(), QStringLiteral("Mildenberg"));
    EXPECT_FALSE(t.Index(1, "Straße").data().toString().size());
}

TEST(KatasterModell, FormatNullZeigtDieZahlUndBearbeitetDenText) {
    Modelltisch t;
    t.kataster.Spalte(*t.kataster.SpaltenIndex("Flur")).format = "0";
    EXPECT_EQ(t.Index(0, "Flur").data(Qt::DisplayRole).toString(), QStringLiteral("7"));
    EXPECT_EQ(t.Index(0, "Flur").data(Qt::EditRole).toString(), QStringLiteral("007"));
    EXPECT_EQ(t.Index(1, "Flur").data(Qt::DisplayRole).toString(), QStringLiteral("12"));
    // Other columns keep their zeros.
    EXPECT_EQ(t.Index(0, "Flurstück").data().toString(), QStringLiteral("00231/0001"));
}

TEST(KatasterModell, ZeilenumbrücheUndLangeZellenBrechenDieAnzeigeNicht) {
    Modelltisch t;
    t.kataster.ZelleSetzen(0, "Eigentümerzusatz", "Zeile 1\nZeile 2\tTab\r\n");
    EXPECT_EQ(t.Index(0, "Eigentümerzusatz").data().toString(),
              QStringLiteral("Zeile 1 Zeile 2 Tab  "));
    EXPECT_EQ(t.Index(0, "Eigentümerzusatz").data(Qt::EditRole).toString(),
              QStringLiteral("Zeile 1\nZeile 2\tTab\r\n"));

    std::string lang;
    for (int i = 0; i < 5000; ++i)
        lang += "ä";
    t.kataster.ZelleSetzen(1, "Eigentümerzusatz", lang);
    const QString gezeigt = t.Index(1, "Eigentümerzusatz").data().toString();
    EXPECT_EQ(gezeigt.size(), 1001);
    EXPECT_TRUE(gezeigt.startsWith(QStringLiteral("ääää")));
    EXPECT_EQ(gezeigt.back(), QChar(0x2026));
    EXPECT_EQ(t.Index(1, "Eigentümerzusatz").data(Qt::EditRole).toString().size(), 5000);

    // Bytes that are no UTF-8 show as replacement characters, not as nothing.
    t.kataster.ZelleSetzen(2, "Eigentümerzusatz",
                           "A\xff\xfe"
                           "B");
    const QString kaputt = t.Index(2, "Eigentümerzusatz").data().toString();
    EXPECT_TRUE(kaputt.startsWith(u'A'));
    EXPECT_TRUE(kaputt.endsWith(u'B'));
    EXPECT_TRUE(kaputt.contains(QChar::ReplacementCharacter));
}

TEST(KatasterModell, MarkenspalteIstEinZentriertesKontrollkästchen) {
    Modelltisch t;
    t.kataster.ZelleSetzen(1, "checkdruck", "1");
    const QModelIndex leer = t.Index(0, "checkdruck");
    const QModelIndex gesetzt = t.Index(1, "checkdruck");
    EXPECT_EQ(leer.data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
    EXPECT_EQ(gesetzt.data(Qt::CheckStateRole).toInt(), Qt::Checked);
    EXPECT_FALSE(gesetzt.data(Qt::DisplayRole).isValid()) << "the box alone, not the 1";
    EXPECT_EQ(gesetzt.data(Qt::TextAlignmentRole).toInt(), Qt::AlignCenter);
    EXPECT_TRUE(t.modell->flags(gesetzt).testFlag(Qt::ItemIsUserCheckable));
    t.modell->EntsperrtSetzen(true);
    EXPECT_FALSE(t.modell->flags(gesetzt).testFlag(Qt::ItemIsEditable));
    // Other columns have no check state and stand left.
    EXPECT_FALSE(t.Index(1, "Name").data(Qt::CheckStateRole).isValid());
    EXPECT_EQ(t.Index(1, "Name").data(Qt::TextAlignmentRole).toInt(),
              Qt::AlignLeft | Qt::AlignVCenter);
}

TEST(KatasterModell, FlurstückIstSchattiert) {
    Modelltisch t;
    const QVariant schatten = t.Index(2, "Flurstück").data(Qt::BackgroundRole);
    ASSERT_TRUE(schatten.isValid());
    EXPECT_EQ(schatten.value<QBrush>().color(), QColor(216, 228, 248));
    EXPECT_FALSE(t.Index(2, "Gemarkung").data(Qt::BackgroundRole).isValid());
}

TEST(KatasterModell, KopfhinweisNenntDenLangenNamen) {
    Modelltisch t;
    const auto hinweis = [&](std::string_view schlüssel) {
        return t.modell
            ->headerData(t.modell->Abschnitt(*t.kataster.SpaltenIndex(schlüssel)), Qt::Horizontal,
                         Qt::ToolTipRole)
            .toString();
    };
    EXPECT_EQ(hinweis("Buchungsart"), QStringLiteral("Spalte Buchungsart"));
    EXPECT_EQ(hinweis("Gemarkungsschlüssel"),
              QStringLiteral("Spalte Gemarkung-Schlüssel (Identifikation)"));
    EXPECT_EQ(hinweis("Eigentümerposition"), QStringLiteral("Spalte Anzahl Eigentümer"));
    EXPECT_EQ(hinweis("Gemarkung"), QStringLiteral("Gemarkung"));
    EXPECT_EQ(hinweis("Flurstückskennzeichen"), QStringLiteral("Flurstückskennzeichen"));
}

// --- clicks on marks -----------------------------------------------------------------------------

TEST(KatasterModell, KlickAufMarkeNummeriertIdGgInKlickfolge) {
    Modelltisch t;
    StempelspalteSicherstellen(t.kataster);
    t.Ansicht("checkdruck;ID_GG;Flurstück");
    Meldungen meldungen(*t.modell);
    const auto klick = [&](int zeile, Qt::CheckState zustand) {
        return t.modell->setData(t.Index(zeile, "checkdruck"), static_cast<int>(zustand),
                                 Qt::CheckStateRole);
    };
    ASSERT_TRUE(klick(2, Qt::Checked));
    ASSERT_TRUE(klick(0, Qt::Checked));
    EXPECT_EQ(t.Zelle(2, "ID_GG"), "1");
    EXPECT_EQ(t.Zelle(0, "ID_GG"), "2");
    EXPECT_EQ(t.Zelle(1, "ID_GG"), "");
    EXPECT_EQ(t.Index(0, "checkdruck").data(Qt::CheckStateRole).toInt(), Qt::Checked);
    EXPECT_EQ(t.Index(0, "ID_GG").data().toString(), QStringLiteral("2"));

    // Cleared: the number goes; set again: the next number, as the site plan counts clicks.
    ASSERT_TRUE(klick(2, Qt::Unchecked));
    EXPECT_FALSE(Markiert(t.kataster, 2));
    EXPECT_EQ(t.Zelle(2, "ID_GG"), "");
    ASSERT_TRUE(klick(2, Qt::Checked));
    EXPECT_EQ(t.Zelle(2, "ID_GG"), "3");
    EXPECT_EQ(t.nummerierung.StempelNr(), 3);

    // Each click repaints its whole row, where the number stands.
    ASSERT_EQ(meldungen.geändert.size(), 4U);
    EXPECT_EQ(meldungen.geändert.back().first, t.modell->index(2, 0));
    EXPECT_EQ(meldungen.geändert.back().second, t.modell->index(2, 2));
}

TEST(KatasterModell, KlickOhneGezeigteStempelspalteSetztNurDieMarke) {
    Modelltisch t;
    // The table has ID_GG, but the view doesn't show it.
    StempelspalteSicherstellen(t.kataster);
    t.Ansicht("checkdruck;Flurstück");
    ASSERT_TRUE(t.modell->setData(t.Index(1, "checkdruck"), static_cast<int>(Qt::Checked),
                                  Qt::CheckStateRole));
    EXPECT_TRUE(Markiert(t.kataster, 1));
    EXPECT_EQ(t.Zelle(1, "ID_GG"), "");
    EXPECT_EQ(t.nummerierung.StempelNr(), 0);
    // A cell that is no check box takes no check state.
    EXPECT_FALSE(t.modell->setData(t.Index(1, "Flurstück"), static_cast<int>(Qt::Checked),
                                   Qt::CheckStateRole));
}

// --- edits ---------------------------------------------------------------------------------------

TEST(KatasterModell, BearbeitenNurBeiEntsperrterTabelle) {
    Modelltisch t;
    const QModelIndex name = t.Index(1, "Name");
    EXPECT_FALSE(t.modell->flags(name).testFlag(Qt::ItemIsEditable));
    EXPECT_FALSE(t.modell->setData(name, QStringLiteral("Schäfer, Uwe")));
    EXPECT_EQ(t.Zelle(1, "Name"), "Weiß, Käthe");

    t.modell->EntsperrtSetzen(true);
    EXPECT_TRUE(t.modell->flags(name).testFlag(Qt::ItemIsEditable));
    EXPECT_TRUE(t.modell->setData(name, QStringLiteral("Schäfer, Uwe")));
    EXPECT_EQ(t.Zelle(1, "Name"), "Schäfer, Uwe");
    // The mark is no text to edit, locked or not.
    EXPECT_FALSE(t.modell->setData(t.Index(1, "checkdruck"), QStringLiteral("x")));
    EXPECT_EQ(t.Zelle(1, "checkdruck"), "");

    t.modell->EntsperrtSetzen(false);
    EXPECT_FALSE(t.modell->setData(name, QStringLiteral("Wieder")));
    EXPECT_EQ(t.Zelle(1, "Name"), "Schäfer, Uwe");
}

/// A grid over the model with the delegate, shown offscreen, unlocked, with the edit question on.
struct Bearbeitungstisch : Modelltisch {
    QtOberfläche qtUi;
    KatasterModell qtModell{kataster, nummerierung, qtUi};
    QTableView ansicht;
    KatasterDelegate delegat{qtModell};

    Bearbeitungstisch() {
        ansicht.setModel(&qtModell);
        ansicht.setItemDelegate(&delegat);
        ansicht.resize(800, 300);
        ansicht.show();
        qtModell.EntsperrtSetzen(true);
        qtModell.NachfragenSetzen(true);
    }
    QModelIndex Name(int zeile) const {
        return qtModell.index(zeile, qtModell.Abschnitt(*kataster.SpaltenIndex("Name")));
    }
    /// Opens the edit of the cell, types `text` and presses `taste`; returns the editor (null once
    /// it is closed and gone), nothing when no edit opened.
    std::optional<QPointer<QLineEdit>> Bearbeiten(const QModelIndex& index, const QString& text,
                                                  Qt::Key taste = Qt::Key_Return) {
        ansicht.setCurrentIndex(index);
        ansicht.edit(index);
        QPointer<QLineEdit> editor = ansicht.viewport()->findChild<QLineEdit*>();
        if (!editor)
            return std::nullopt;
        editor->setText(text);
        QKeyEvent drücken(QEvent::KeyPress, taste, Qt::NoModifier);
        QCoreApplication::sendEvent(editor, &drücken);
        // The view closes an edit by a queued call.
        QCoreApplication::processEvents();
        return editor;
    }
    static bool Offen(const QPointer<QLineEdit>& editor) { return editor && editor->isVisible(); }
};

TEST(KatasterModell, ÄnderungsfrageJaÜbernimmtNeinVerwirftAbbrechenBleibt) {
    struct Fall {
        QMessageBox::StandardButton knopf;
        const char* danach; ///< the cell after the answer
        bool offen;         ///< the edit is still open
    };
    const std::vector<Fall> fälle = {
        {QMessageBox::Yes, "Schäfer, Uwe", false},
        {QMessageBox::No, "Weiß, Käthe", false},
        {QMessageBox::Cancel, "Weiß, Käthe", true},
    };
    for (const Fall& fall : fälle) {
        Bearbeitungstisch t;
        Beantworter antwort(fall.knopf);
        const auto geöffnet = t.Bearbeiten(t.Name(1), QStringLiteral("Schäfer, Uwe"));
        ASSERT_TRUE(geöffnet) << "the edit opens";
        const QPointer<QLineEdit> editor = *geöffnet;
        ASSERT_EQ(antwort.boxen.size(), 1U) << fall.danach;
        EXPECT_EQ(antwort.boxen[0].text,
                  QStringLiteral("Änderung \"Schäfer, Uwe\" übernehmen?   "));
        EXPECT_EQ(antwort.boxen[0].titel, QStringLiteral("Datenbank"));
        EXPECT_EQ(antwort.boxen[0].knöpfe,
                  QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        EXPECT_EQ(t.Zelle(1, "Name"), fall.danach);
        EXPECT_EQ(Bearbeitungstisch::Offen(editor), fall.offen) << fall.danach;
        if (fall.offen) {
            EXPECT_EQ(editor->text(), QStringLiteral("Schäfer, Uwe")) << "what was typed stays";
        }
    }
}

TEST(KatasterModell, OhneÄnderungOderOhneNachfrageKeineFrage) {
    Bearbeitungstisch t;
    Beantworter antwort(QMessageBox::No);
    // The text as it was: closed without a question.
    const auto gleich = t.Bearbeiten(t.Name(0), QStringLiteral("Müller-Lüdenscheidt, Jörg"));
    ASSERT_TRUE(gleich);
    EXPECT_FALSE(Bearbeitungstisch::Offen(*gleich));
    // Escape closes without a question and keeps the cell.
    const auto escape = t.Bearbeiten(t.Name(0), QStringLiteral("anders"), Qt::Key_Escape);
    ASSERT_TRUE(escape);
    EXPECT_FALSE(Bearbeitungstisch::Offen(*escape));
    EXPECT_EQ(t.Zelle(0, "Name"), "Müller-Lüdenscheidt, Jörg");
    // With the question off the edit is taken as typed.
    t.qtModell.NachfragenSetzen(false);
    ASSERT_TRUE(t.Bearbeiten(t.Name(0), QStringLiteral("Köhler, Ute")));
    EXPECT_EQ(t.Zelle(0, "Name"), "Köhler, Ute");
    EXPECT_TRUE(antwort.boxen.empty());
}

TEST(KatasterModell, EditorÖffnetNichtBeiGesperrterTabelle) {
    Bearbeitungstisch t;
    t.qtModell.EntsperrtSetzen(false);
    Beantworter antwort;
    EXPECT_FALSE(t.Bearbeiten(t.Name(0), QStringLiteral("x")));
    EXPECT_EQ(t.Zelle(0, "Name"), "Müller-Lüdenscheidt, Jörg");
    EXPECT_TRUE(antwort.boxen.empty());
}

TEST(KatasterModell, KlickIrgendwoInDieMarkenzelleSchaltetSie) {
    Bearbeitungstisch t;
    StempelspalteSicherstellen(t.kataster);
    {
        KatasterModell::Umbau umbau(t.qtModell);
        SpaltenlisteAnwenden(t.kataster, "checkdruck;ID_GG;Name");
    }
    t.ansicht.setColumnWidth(0, 80);
    const auto klicken = [&](int zeile, int x) {
        const QRect zelle = t.ansicht.visualRect(t.qtModell.index(zeile, 0));
        const QPointF punkt(zelle.left() + x, zelle.center().y());
        QMouseEvent drücken(QEvent::MouseButtonPress, punkt,
                            t.ansicht.viewport()->mapToGlobal(punkt), Qt::LeftButton,
                            Qt::LeftButton, Qt::NoModifier);
        QMouseEvent lassen(QEvent::MouseButtonRelease, punkt,
                           t.ansicht.viewport()->mapToGlobal(punkt), Qt::LeftButton, Qt::NoButton,
                           Qt::NoModifier);
        QCoreApplication::sendEvent(t.ansicht.viewport(), &drücken);
        QCoreApplication::sendEvent(t.ansicht.viewport(), &lassen);
    };
    klicken(1, 5);  // near the left edge, away from the centred box
    klicken(0, 40); // on the box
    EXPECT_TRUE(Markiert(t.kataster, 1));
    EXPECT_TRUE(Markiert(t.kataster, 0));
    EXPECT_EQ(t.Zelle(1, "ID_GG"), "1");
    EXPECT_EQ(t.Zelle(0, "ID_GG"), "2");
    klicken(1, 70);
    EXPECT_FALSE(Markiert(t.kataster, 1));
    EXPECT_EQ(t.Zelle(1, "ID_GG"), "");
}

// --- sort list and widths ------------------------------------------------------------------------

TEST(Sortierliste, LinksklicksHängenAnRechtsklickNimmtDenLetztenWeg) {
    Sortierliste liste;
    EXPECT_TRUE(liste.Leer());
    EXPECT_EQ(liste.Text(), "");
    liste.LetzteEntfernen();
    EXPECT_TRUE(liste.Leer()) << "an empty list stays empty";
    EXPECT_TRUE(liste.Hinzufügen("Gemarkung"));
    EXPECT_TRUE(liste.Hinzufügen("Flur"));
    EXPECT_TRUE(liste.Hinzufügen("Flurstück"));
    EXPECT_FALSE(liste.Hinzufügen("Flur")) << "a key twice can't change the order";
    EXPECT_EQ(liste.Text(), "Gemarkung,Flur,Flurstück");
    liste.LetzteEntfernen();
    EXPECT_EQ(liste.Text(), "Gemarkung,Flur");
    EXPECT_TRUE(liste.Hinzufügen("Eigentümerposition"));
    EXPECT_EQ(liste.Text(), "Gemarkung,Flur,Eigentümerposition");
    liste.Leeren();
    EXPECT_TRUE(liste.Leer());
}

TEST(Spaltenbreiten, TwipsUndPixelNachAuflösungUndSchrift) {
    // 1440 twips are an inch, whatever the font, as long as it isn't wider than 100 twips a digit.
    const double bildschirm = PixelJeTwip(96, 6.0);
    EXPECT_EQ(TwipsZuPixel(1440, bildschirm), 96);
    EXPECT_EQ(TwipsZuPixel(1200, bildschirm), 80);
    EXPECT_EQ(TwipsZuPixel(1440, PixelJeTwip(144, 6.0)), 144);
    EXPECT_EQ(TwipsZuPixel(1440, PixelJeTwip(0, 0.0)), 96) << "a screen without resolution";
    // A font with digits of 8 pixels makes 100 twips 8 pixels: fitted texts still fit.
    EXPECT_EQ(TwipsZuPixel(2200, PixelJeTwip(96, 8.0)), 176);
    EXPECT_EQ(TwipsZuPixel(0, bildschirm), 0);
    EXPECT_EQ(TwipsZuPixel(1, bildschirm), 1);
    // A pixel is 15 twips at 96 dpi: widths come back to within half a pixel.
    for (int twips : {600, 1000, 1200, 1999, 3000})
        EXPECT_NEAR(PixelZuTwips(TwipsZuPixel(twips, bildschirm), bildschirm), twips, 8) << twips;
    EXPECT_EQ(PixelZuTwips(TwipsZuPixel(1200, bildschirm), bildschirm), 1200);
    EXPECT_EQ(PixelZuTwips(0, bildschirm), 0);
}

TEST(Spaltenbreiten, TextNachSchlüsselnHinUndZurück) {
    Kataster kataster;
    SpaltenAnlegen(kataster);
    kataster.Spalte(*kataster.SpaltenIndex("Flurstück")).breite = 1777;
    kataster.Spalte(*kataster.SpaltenIndex("Beschreibung Sondereigentum")).breite = 2345;
    const std::string text = SpaltenbreitenText(kataster);
    EXPECT_TRUE(text.starts_with("Landkreis:1200;Katasteramt:3000;"));
    EXPECT_NE(text.find(";Flurstück:1777;"), std::string::npos);

    Kataster andere;
    SpaltenAnlegen(andere);
    EXPECT_EQ(SpaltenbreitenAnwenden(andere, text), static_cast<int>(andere.Spaltenzahl()));
    EXPECT_EQ(andere.Spalte(*andere.SpaltenIndex("Flurstück")).breite, 1777);
    EXPECT_EQ(andere.Spalte(*andere.SpaltenIndex("Beschreibung Sondereigentum")).breite, 2345);

    // Pieces that name no column or no width are passed over.
    EXPECT_EQ(SpaltenbreitenAnwenden(andere, "Gibtsnicht:100;Flur;Fläche:abc;Fläche:-5;Name:900;"),
              1);
    EXPECT_EQ(andere.Spalte(*andere.SpaltenIndex("Name")).breite, 900);
    EXPECT_EQ(andere.Spalte(*andere.SpaltenIndex("Fläche")).breite, 1200);
    EXPECT_EQ(SpaltenbreitenText(Kataster{}), "");
}

} // namespace
} // namespace flurix::gui
