// The grid's model over the cadastre table, its delegate and the column widths.

#include "core/katalog.hpp"
#include "core/kataster.hpp"
#include "core/markierung.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/spaltenansicht.hpp"
#include "gui/kataster_delegate.hpp"
#include "gui/kataster_modell.hpp"
#include "gui/qt_text.hpp"
#include "gui/spaltenbreiten.hpp"
#include "gui_testhilfen.hpp"

#include <QBrush>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QTableView>

#include <gtest/gtest.h>

namespace flurix::gui {
namespace {

using namespace Qt::Literals::StringLiterals;
using test::Beantworter;
using test::Mitschrift;

/// Adds a row whose named cells hold the given texts, all others empty.
void ZeileAnfügen(Kataster& kataster,
                  std::initializer_list<std::pair<std::string_view, std::string_view>> zellen) {
    std::vector<std::string> texte(kataster.Spaltenzahl());
    for (const auto& [schlüssel, text] : zellen)
        texte[*kataster.SpaltenIndex(schlüssel)] = text;
    const std::vector<std::string_view> ansicht(texte.begin(), texte.end());
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
        for (const auto& [gemarkung, flur, flurstück, name] :
             {std::array<const char*, 4>{"Zehdenick", "007", "00231/0001",
                                         "Müller-Lüdenscheidt, Jörg"},
              {"Mildenberg", "012", "00017/0000", "Weiß, Käthe"},
              {"Badingen", "001", "00005/0002", "Groß, Sören"}})
            ZeileAnfügen(kataster, {{"Gemarkung", gemarkung},
                                    {"Flur", flur},
                                    {"Flurstück", flurstück},
                                    {"Name", name}});
        modell = std::make_unique<KatasterModell>(kataster, nummerierung, ui);
    }
    QModelIndex Index(int zeile, std::string_view schlüssel) const {
        return modell->index(zeile, modell->Abschnitt(*kataster.SpaltenIndex(schlüssel)));
    }
    std::string Zelle(int zeile, std::string_view schlüssel) const {
        return std::string(kataster.Zelle(static_cast<std::size_t>(zeile), schlüssel));
    }
    void Ansicht(std::string_view liste) {
        KatasterModell::Umbau umbau(*modell);
        SpaltenlisteAnwenden(kataster, liste);
    }
    bool Klick(int zeile, Qt::CheckState zustand, std::string_view spalte = "checkdruck") {
        return modell->setData(Index(zeile, spalte), static_cast<int>(zustand), Qt::CheckStateRole);
    }
};

struct Meldungen {
    int zurückgesetzt = 0;
    std::vector<std::pair<int, int>> eingefügt;
    std::vector<std::pair<QModelIndex, QModelIndex>> geändert;

    explicit Meldungen(const KatasterModell& modell) {
        QObject::connect(&modell, &QAbstractItemModel::modelReset, [this] { ++zurückgesetzt; });
        QObject::connect(
            &modell, &QAbstractItemModel::rowsInserted,
            [this](const QModelIndex&, int a, int b) { eingefügt.emplace_back(a, b); });
        QObject::connect(
            &modell, &QAbstractItemModel::dataChanged,
            [this](const QModelIndex& a, const QModelIndex& b) { geändert.emplace_back(a, b); });
    }
};

TEST(KatasterModell, ZeilenUndSpaltenFolgenTabelleUndAnsicht) {
    Modelltisch t;
    EXPECT_EQ(t.modell->rowCount(), 3);
    // Every column of the catalogue but the hidden NrStp, in the catalogue's order.
    EXPECT_EQ(t.modell->columnCount(), static_cast<int>(Katalog().size()) - 1);
    EXPECT_EQ(t.modell->Abschnitt(*t.kataster.SpaltenIndex("NrStp")), -1);
    EXPECT_EQ(t.modell->headerData(0, Qt::Horizontal).toString(), u"Landkreis"_s);

    Meldungen meldungen(*t.modell);
    t.Ansicht("Flurstück;Gemarkung;Gibtsnicht;checkdruck");
    EXPECT_EQ(meldungen.zurückgesetzt, 1);
    ASSERT_EQ(t.modell->columnCount(), 3);
    EXPECT_EQ(t.modell->headerData(0, Qt::Horizontal).toString(), u"Flurstück"_s);
    EXPECT_EQ(t.modell->headerData(1, Qt::Horizontal).toString(), u"Gemarkung"_s);
    EXPECT_EQ(t.modell->Spalte(2), t.kataster.SpaltenIndex("checkdruck"));
    EXPECT_EQ(t.modell->Spalte(3), std::nullopt);
    EXPECT_EQ(t.modell->index(1, 0).data().toString(), u"00017/0000"_s);
    EXPECT_EQ(t.modell->headerData(1, Qt::Vertical).toInt(), 2) << "rows are counted from 1";

    ZeileAnfügen(t.kataster, {{"Flurstück", "00099/0000"}});
    ZeileAnfügen(t.kataster, {{"Flurstück", "00100/0000"}});
    EXPECT_EQ(t.modell->rowCount(), 3);
    t.modell->ZeilenAngefügt();
    EXPECT_EQ(t.modell->rowCount(), 5);
    EXPECT_EQ(meldungen.eingefügt, (std::vector<std::pair<int, int>>{{3, 4}}));
    EXPECT_EQ(meldungen.zurückgesetzt, 1);
    EXPECT_EQ(t.modell->index(4, 0).data().toString(), u"00100/0000"_s);

    t.kataster.ZeilenLöschen(std::vector<std::size_t>{0, 1});
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
    t.kataster.SpalteHinzufügen({"ID_GG", "ID_GG", 600});
    t.modell->ZellenGeändert();
    EXPECT_EQ(meldungen.zurückgesetzt, 1);
    EXPECT_EQ(t.modell->headerData(t.modell->columnCount() - 1, Qt::Horizontal).toString(),
              u"ID_GG"_s);

    // Until an Umbau ends the view still counts the old rows and columns; they give nothing.
    KatasterModell::Umbau umbau(*t.modell);
    t.kataster.Leeren();
    EXPECT_EQ(t.modell->rowCount(), 3);
    EXPECT_FALSE(t.modell->index(2, 5).data().isValid());
    EXPECT_FALSE(t.modell->headerData(5, Qt::Horizontal).isValid());
    EXPECT_EQ(t.modell->flags(t.modell->index(0, 0)), Qt::NoItemFlags);
}

/// A cell's or header's value of one role as the golden file writes it.
std::string Wert(const QVariant& wert, int rolle) {
    if (!wert.isValid())
        return "-";
    if (rolle == Qt::CheckStateRole)
        return wert.toInt() == Qt::Checked ? "an" : wert.toInt() == Qt::Unchecked ? "aus" : "?";
    if (wert.typeId() == QMetaType::QBrush)
        return Utf8(wert.value<QBrush>().color().name());
    if (rolle == Qt::TextAlignmentRole)
        return wert.toInt() == static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter) ? "links"
               : wert.toInt() == Qt::AlignCenter                                  ? "mitte"
                                                                                  : "?";
    QString text = wert.toString();
    text.replace(u'\n', u"\\n"_s).replace(u'\r', u"\\r"_s).replace(u'\t', u"\\t"_s);
    return "\"" + Utf8(text) + "\"";
}

// Every role of some columns' cells, the unlocked flags and every header: Flur with the format
// "0", line breaks and bytes that are no UTF-8, the mark a centred box, Flurstück shaded.
TEST(KatasterModell, ZellenUndKöpfeJeRolle) {
    Modelltisch t;
    t.kataster.Spalte(*t.kataster.SpaltenIndex("Flur")).format = "0";
    t.kataster.ZelleSetzen(1, "checkdruck", "1");
    t.kataster.ZelleSetzen(0, "Eigentümerzusatz", "Zeile 1\nZeile 2\tTab\r\n");
    t.kataster.ZelleSetzen(2, "Eigentümerzusatz",
                           "A\xff\xfe"
                           "B");
    t.modell->EntsperrtSetzen(true);
    std::string ist;
    for (const char* spalte :
         {"Gemarkung", "Flur", "Flurstück", "Name", "Straße", "Eigentümerzusatz", "checkdruck"})
        for (int zeile = 0; zeile < 3; ++zeile) {
            const QModelIndex index = t.Index(zeile, spalte);
            ist += std::to_string(zeile) + " " + spalte + ":";
            for (int rolle : {Qt::DisplayRole, Qt::EditRole, Qt::CheckStateRole,
                              Qt::TextAlignmentRole, Qt::BackgroundRole})
                ist += " " + Wert(index.data(rolle), rolle);
            const Qt::ItemFlags merkmale = t.modell->flags(index);
            ist += std::string(merkmale.testFlag(Qt::ItemIsEditable) ? " bearbeitbar" : "") +
                   (merkmale.testFlag(Qt::ItemIsUserCheckable) ? " ankreuzbar" : "") + "\n";
        }
    for (int a = 0; a < t.modell->columnCount(); ++a) {
        ist += "Kopf";
        for (int rolle : {Qt::DisplayRole, Qt::ToolTipRole, Qt::TextAlignmentRole})
            ist += " " + Wert(t.modell->headerData(a, Qt::Horizontal, rolle), rolle);
        ist += "\n";
    }
    EXPECT_EQ(test::GoldenVergleich(ist, test::Testdaten() / "gui" / "modell_rollen.txt"), "");

    std::string lang;
    for (int i = 0; i < 5000; ++i)
        lang += "ä";
    t.kataster.ZelleSetzen(1, "Eigentümerzusatz", lang);
    EXPECT_EQ(t.Index(1, "Eigentümerzusatz").data().toString(),
              QString(1000, u'ä') + QChar(0x2026));
    EXPECT_EQ(t.Index(1, "Eigentümerzusatz").data(Qt::EditRole).toString().size(), 5000);
}

TEST(KatasterModell, KlickAufMarkeNummeriertIdGgNurWennGezeigt) {
    Modelltisch t;
    Mitschrift m("klick_auf_marke");
    StempelspalteSicherstellen(t.kataster);
    // Per row the mark and ID_GG, then the last number given.
    const auto zustand = [&] {
        std::string text;
        for (int z = 0; z < 3; ++z)
            text += (Markiert(t.kataster, static_cast<std::size_t>(z)) ? "x" : "-") +
                    t.Zelle(z, "ID_GG") + " ";
        return text + std::to_string(t.nummerierung.StempelNr());
    };
    t.Ansicht("checkdruck;Flurstück");
    ASSERT_TRUE(t.Klick(1, Qt::Checked));
    m << zustand();
    EXPECT_FALSE(t.Klick(1, Qt::Checked, "Flurstück"));

    t.Ansicht("checkdruck;ID_GG;Flurstück");
    Meldungen meldungen(*t.modell);
    ASSERT_TRUE(t.Klick(2, Qt::Checked));
    ASSERT_TRUE(t.Klick(0, Qt::Checked));
    m << zustand();
    EXPECT_EQ(t.Index(0, "checkdruck").data(Qt::CheckStateRole).toInt(), Qt::Checked);
    EXPECT_EQ(t.Index(0, "ID_GG").data().toString(), u"2"_s);
    ASSERT_TRUE(t.Klick(2, Qt::Unchecked));
    m << zustand();
    ASSERT_TRUE(t.Klick(2, Qt::Checked));
    m << zustand();
    ASSERT_EQ(meldungen.geändert.size(), 4U);
    EXPECT_EQ(meldungen.geändert.back(),
              std::make_pair(t.modell->index(2, 0), t.modell->index(2, 2)));
}

TEST(KatasterModell, BearbeitenNurBeiEntsperrterTabelle) {
    Modelltisch t;
    const QModelIndex name = t.Index(1, "Name");
    EXPECT_FALSE(t.modell->flags(name).testFlag(Qt::ItemIsEditable));
    EXPECT_FALSE(t.modell->setData(name, u"Schäfer, Uwe"_s));
    EXPECT_EQ(t.Zelle(1, "Name"), "Weiß, Käthe");

    t.modell->EntsperrtSetzen(true);
    EXPECT_TRUE(t.modell->flags(name).testFlag(Qt::ItemIsEditable));
    EXPECT_TRUE(t.modell->setData(name, u"Schäfer, Uwe"_s));
    EXPECT_EQ(t.Zelle(1, "Name"), "Schäfer, Uwe");
    EXPECT_FALSE(t.modell->setData(t.Index(1, "checkdruck"), u"x"_s));
    EXPECT_EQ(t.Zelle(1, "checkdruck"), "");

    t.modell->EntsperrtSetzen(false);
    EXPECT_FALSE(t.modell->setData(name, u"Wieder"_s));
    EXPECT_EQ(t.Zelle(1, "Name"), "Schäfer, Uwe");
}

/// A grid with the delegate, shown, unlocked, with the edit question on.
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
    /// Edits the name in `zeile`: the editor (null once gone), nothing when no edit opened.
    std::optional<QPointer<QLineEdit>> Bearbeiten(int zeile, const QString& text,
                                                  Qt::Key taste = Qt::Key_Return) {
        const QModelIndex index =
            qtModell.index(zeile, qtModell.Abschnitt(*kataster.SpaltenIndex("Name")));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        ansicht.setCurrentIndex(index);
        ansicht.edit(index);
        QPointer<QLineEdit> editor = ansicht.viewport()->findChild<QLineEdit*>();
        if (!editor)
            return std::nullopt;
        editor->setText(text);
        QKeyEvent drücken(QEvent::KeyPress, taste, Qt::NoModifier);
        QCoreApplication::sendEvent(editor, &drücken);
        QCoreApplication::processEvents();
        return editor;
    }
    static bool Offen(const QPointer<QLineEdit>& editor) { return editor && editor->isVisible(); }
};

TEST(KatasterModell, ÄnderungsfrageJaÜbernimmtNeinVerwirftAbbrechenBleibt) {
    const std::tuple<QMessageBox::StandardButton, const char*, bool> fälle[] = {
        {QMessageBox::Yes, "Schäfer, Uwe", false},
        {QMessageBox::No, "Weiß, Käthe", false},
        {QMessageBox::Cancel, "Weiß, Käthe", true}, // the edit stays open with what was typed
    };
    Mitschrift m("aenderungsfrage");
    for (const auto& [knopf, danach, offen] : fälle) {
        SCOPED_TRACE(danach);
        Bearbeitungstisch t;
        Beantworter antwort(knopf);
        const auto editor = t.Bearbeiten(1, u"Schäfer, Uwe"_s);
        ASSERT_TRUE(editor);
        m << antwort.Beschreibungen();
        EXPECT_EQ(t.Zelle(1, "Name"), danach);
        EXPECT_EQ(Bearbeitungstisch::Offen(*editor), offen);
        EXPECT_TRUE(!offen || (*editor)->text() == u"Schäfer, Uwe"_s);
    }
}

TEST(KatasterModell, KeineFrageOhneÄnderungNachEscapeOhneNachfrageOderGesperrt) {
    Bearbeitungstisch t;
    Beantworter antwort(QMessageBox::No);
    const auto gleich = t.Bearbeiten(0, u"Müller-Lüdenscheidt, Jörg"_s);
    ASSERT_TRUE(gleich);
    EXPECT_FALSE(Bearbeitungstisch::Offen(*gleich));
    const auto escape = t.Bearbeiten(0, u"anders"_s, Qt::Key_Escape);
    ASSERT_TRUE(escape);
    EXPECT_FALSE(Bearbeitungstisch::Offen(*escape));
    EXPECT_EQ(t.Zelle(0, "Name"), "Müller-Lüdenscheidt, Jörg");
    t.qtModell.NachfragenSetzen(false);
    ASSERT_TRUE(t.Bearbeiten(0, u"Köhler, Ute"_s));
    EXPECT_EQ(t.Zelle(0, "Name"), "Köhler, Ute");
    t.qtModell.EntsperrtSetzen(false);
    EXPECT_FALSE(t.Bearbeiten(0, u"x"_s));
    EXPECT_EQ(t.Zelle(0, "Name"), "Köhler, Ute");
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
        const QPointF global = t.ansicht.viewport()->mapToGlobal(punkt);
        QMouseEvent drücken(QEvent::MouseButtonPress, punkt, global, Qt::LeftButton, Qt::LeftButton,
                            Qt::NoModifier);
        QMouseEvent lassen(QEvent::MouseButtonRelease, punkt, global, Qt::LeftButton, Qt::NoButton,
                           Qt::NoModifier);
        QCoreApplication::sendEvent(t.ansicht.viewport(), &drücken);
        QCoreApplication::sendEvent(t.ansicht.viewport(), &lassen);
    };
    klicken(1, 5);  // near the left edge, away from the centred box
    klicken(0, 40); // on the box
    EXPECT_EQ(t.Zelle(1, "ID_GG"), "1");
    EXPECT_EQ(t.Zelle(0, "ID_GG"), "2");
    EXPECT_TRUE(Markiert(t.kataster, 1) && Markiert(t.kataster, 0));
    klicken(1, 70);
    EXPECT_FALSE(Markiert(t.kataster, 1));
    EXPECT_EQ(t.Zelle(1, "ID_GG"), "");
}

TEST(Spaltenbreiten, TwipsUndPixelNachAuflösungUndSchrift) {
    // 1440 twips are an inch unless a digit is wider than 100 twips: then 100 twips are a digit.
    const double bildschirm = PixelJeTwip(96, 6.0);
    const std::tuple<int, double, int> fälle[] = {{1440, bildschirm, 96},
                                                  {1200, bildschirm, 80},
                                                  {1440, PixelJeTwip(144, 6.0), 144},
                                                  {1440, PixelJeTwip(0, 0.0), 96}, // no resolution
                                                  {2200, PixelJeTwip(96, 8.0), 176},
                                                  {0, bildschirm, 0},
                                                  {1, bildschirm, 1}};
    for (const auto& [twips, faktor, pixel] : fälle)
        EXPECT_EQ(TwipsZuPixel(twips, faktor), pixel) << twips;
    for (int twips : {600, 1000, 1200, 1999, 3000})
        EXPECT_NEAR(PixelZuTwips(TwipsZuPixel(twips, bildschirm), bildschirm), twips, 8) << twips;
    EXPECT_EQ(PixelZuTwips(TwipsZuPixel(1200, bildschirm), bildschirm), 1200);
    EXPECT_EQ(PixelZuTwips(0, bildschirm), 0);
}

TEST(Spaltenbreiten, TextNachSchlüsselnHinUndZurück) {
    Kataster kataster, andere;
    SpaltenAnlegen(kataster);
    SpaltenAnlegen(andere);
    const auto breite = [](Kataster& k, std::string_view s) -> int& {
        return k.Spalte(*k.SpaltenIndex(s)).breite;
    };
    breite(kataster, "Flurstück") = 1777;
    breite(kataster, "Beschreibung Sondereigentum") = 2345;
    const std::string text = SpaltenbreitenText(kataster);
    EXPECT_TRUE(text.starts_with("Landkreis:1200;Katasteramt:3000;")) << text;
    EXPECT_NE(text.find(";Flurstück:1777;"), std::string::npos);
    EXPECT_EQ(SpaltenbreitenAnwenden(andere, text), static_cast<int>(andere.Spaltenzahl()));
    EXPECT_EQ(breite(andere, "Flurstück"), 1777);
    EXPECT_EQ(breite(andere, "Beschreibung Sondereigentum"), 2345);
    EXPECT_EQ(
        SpaltenbreitenAnwenden(andere, "Gibtsnicht:100;Flur;Flur:0;Fläche:abc;Fläche:-5;Name:900;"),
        1);
    EXPECT_EQ(breite(andere, "Name"), 900);
    EXPECT_EQ(breite(andere, "Fläche"), 1200);
    EXPECT_EQ(SpaltenbreitenText(Kataster{}), "");
}

} // namespace
} // namespace flurix::gui
