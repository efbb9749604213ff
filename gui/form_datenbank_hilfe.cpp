// The help and info keys of the main window: README.md of the installation in the browser, and the
// program's version with the libraries it is built with and their licences.

#include "gui/form_datenbank.hpp"

#include "gui/qt_oberflaeche.hpp"
#include "gui/qt_text.hpp"

#include "flurix_revision.hpp"

#include <QAction>
#include <QFile>
#include <QTextDocument>
#include <QToolBar>

#include <pugixml.hpp>
#include <sqlite3.h>
#include <xlsxwriter.h>
#include <zip.h>

namespace flurix::gui {
namespace {

/// The page of the help key in the working directory.
constexpr std::string_view Hilfeseite = "Flurix_Hilfe.html";

/// The text of the info key: version, revision and every library with its version and licence.
std::string InfoText() {
    const int pugi = PUGIXML_VERSION; // 1130 for 1.13
    const std::string pugixml = std::to_string(pugi / 1000) + "." + std::to_string(pugi % 1000 / 10);
    struct Bibliothek {
        std::string name, version, lizenz;
    };
    const Bibliothek bibliotheken[] = {
        {"Qt", qVersion(), "LGPL-3.0"},
        {"SQLite", sqlite3_libversion(), "gemeinfrei (public domain)"},
        {"pugixml", pugixml, "MIT"},
        {"libzip", zip_libzip_version(), "BSD-3-Clause"},
        {"libxlsxwriter", LXW_VERSION, "BSD-2-Clause"},
    };
    std::string text = FensterTitel() + "\nGit-Revision: " + std::string(GitRevision) +
                       "\n\nVerwendete Bibliotheken und ihre Lizenzen:\n";
    for (const Bibliothek& b : bibliotheken)
        text += "  " + b.name + " " + b.version + ": " + b.lizenz + "\n";
    text += "\nDie Lizenztexte liegen den Paketen der Bibliotheken bei "
            "(unter Debian in /usr/share/doc/<Paket>/copyright).";
    return text;
}

} // namespace

void FormDatenbank::HilfeAnlegen() {
    QAction* hilfe = Befehl(QStringLiteral("btnHilfe"), QStyle::SP_DialogHelpButton,
                            QStringLiteral("Hilfe"), QStringLiteral("Hilfe im Browser öffnen"));
    hilfe->setShortcut(QKeySequence::HelpContents);
    QAction* info = Befehl(QStringLiteral("btnInfo"), QStyle::SP_MessageBoxInformation,
                           QStringLiteral("Info"),
                           QStringLiteral("Version, Git-Revision und Lizenzen der Bibliotheken"));
    connect(hilfe, &QAction::triggered, this, [this] { Hilfe(); });
    connect(info, &QAction::triggered, this, [this] { Info(); });
}

std::filesystem::path FormDatenbank::Hilfe() {
    const std::filesystem::path liesmich = m_zustand.installation.ordner / "README.md";
    QFile quelle(QPfad(liesmich));
    if (!quelle.open(QIODevice::ReadOnly)) {
        m_ui.Meldung("Die Hilfe " + liesmich.string() + " wurde nicht gefunden!   ", ProduktTitel,
                     Stil::Information);
        return {};
    }
    // A browser shows Markdown as plain text, or not at all: the help is made a page of its own.
    QTextDocument dokument;
    dokument.setMarkdown(QString::fromUtf8(quelle.readAll()));
    dokument.setMetaInformation(QTextDocument::DocumentTitle, QStringLiteral("Flurix – Hilfe"));
    std::filesystem::path seite = m_zustand.arbeitsverzeichnis / Hilfeseite;
    QFile ziel(QPfad(seite));
    if (!ziel.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        ziel.write(dokument.toHtml().toUtf8()) < 0)
        seite = liesmich;
    ziel.close();
    DateiZeigen(seite);
    return seite;
}

void FormDatenbank::Info() { m_ui.Meldung(InfoText(), "Info", Stil::Information); }

} // namespace flurix::gui
