#pragma once
// The main window: the cadastre table in its grid, the toolbar of the program's commands, the
// search bar, the status bar of six panels, and the start of what the command line asked for.
// The class name, its slots and signals stay ASCII for moc.

#include "core/kataster.hpp"
#include "core/markierung.hpp"
#include "core/programm.hpp"
#include "gui/sortierliste.hpp"
#include "import/datenladen.hpp"

#include <QCoreApplication>
#include <QMainWindow>
#include <QPointer>
#include <QString>
#include <QStyle>
#include <QUrl>

#include <array>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QAction;
class QCloseEvent;
class QComboBox;
class QItemSelection;
class QLabel;
class QLineEdit;
class QProgressBar;
class QTableView;
class QToolBar;
class QToolButton;

namespace flurix::report {
class Registerauszug;
}

namespace flurix::import {
struct Ladebindung;
struct Ladeergebnis;
}

namespace flurix::gui {

class FormAlkis;
class KatasterModell;
class QtOberfläche;

/// The main window FormDatenbank. It owns the cadastre table of the run and shows it through a
/// KatasterModell; it draws what the start-up in `zustand` found (caption, view list) and runs
/// the commands of its toolbar through the core. The three references must outlive the window.
/// The constructor connects `ui` to this window's status bar and message parent, and lays the
/// catalogue's columns out in the chosen view on the empty table.
class FormDatenbank : public QMainWindow {
    Q_OBJECT

public:
    FormDatenbank(Programmzustand& zustand, Zahlenformat& format, QtOberfläche& ui,
                  QWidget* eltern = nullptr);
    ~FormDatenbank() override;
    FormDatenbank(const FormDatenbank&) = delete;
    FormDatenbank& operator=(const FormDatenbank&) = delete;
    FormDatenbank(FormDatenbank&&) = delete;
    FormDatenbank& operator=(FormDatenbank&&) = delete;

    /// After the start-up: restores the column widths of the last run ("ColWidths"), shows the
    /// window unless the run is unattended or the map alone, then starts by a single-shot timer
    /// what the command line asked for, so that the window is painted first: a file to load
    /// (Timer1), the unattended NAS run (Timer2), the map.
    void Starten();

    /// btnDbÖffnen: the open dialog (several files may be chosen), then the load of the chosen
    /// files with the kind of the chosen filter. Cancel ends silently.
    void DbOeffnen();
    /// btnOptSystem: the dialog of the configuration backup.
    void OptSystem();
    /// btnHilfe: README.md of the installation as an HTML page in the working directory, opened
    /// in the browser; the file itself when the page can't be written. Without README.md the user
    /// is told. Returns the file opened, empty for none.
    std::filesystem::path Hilfe();
    /// btnInfo: the program's version and git revision and the libraries it uses with their
    /// licences, in a message box.
    void Info();
    /// btnBeenden (Beenden_Click): the one way out. Returns false when the user chose to stay;
    /// otherwise the column widths are saved, the window is hidden and the event loop is told to
    /// end with `exitcode`.
    bool BeendenKlick(int exitcode = 0);

    /// The load of one job with the readers and dialogs of this window; other commands are locked
    /// while it runs. Every failure has been shown through the UI port when it returns.
    Ergebnis Laden(const import::Ladeauftrag& auftrag);
    /// A filling of the table from the NAS window ("nach Flurix"): inside the model's reset, the
    /// Gemarkung/Flur box and the search columns anew afterwards, as after a load.
    Ergebnis TabelleFüllen(const std::function<Ergebnis(Kataster&)>& füllen);
    /// The NAS window with `datei` (a NAS file or saved NAS database): its option dialog first,
    /// then the file read in it. The window is made at the first call and kept (hidden) after.
    Ergebnis NasFensterÖffnen(const std::filesystem::path& datei);
    /// The NAS window of the run, made at the first call (empty, without a file).
    FormAlkis& NasFenster();
    /// btnALKIS: the NAS window shown again (after "Ausblenden") or opened empty.
    void NasFensterZeigen();

    /// What ends the program once Beenden has run, with the exit code: QCoreApplication::exit
    /// unless set otherwise (a test records the code instead of ending its event loops).
    void ProgrammEndeSetzen(std::function<void(int)> ende) { m_programmEnde = std::move(ende); }
    /// Folder of the per-user settings (column widths); ~/.config/flurix unless set otherwise.
    void BenutzerordnerSetzen(std::filesystem::path ordner) {
        m_benutzerordner = std::move(ordner);
    }
    /// What opens a file in the system's program (ALBDatenSpalteEdit, the report, the extract):
    /// QDesktopServices::openUrl unless set otherwise.
    void DateiÖffnerSetzen(std::function<bool(const QUrl&)> öffner) {
        m_dateiÖffnen = std::move(öffner);
        m_dateiÖffnenGesetzt = true;
    }

    /// Label of status panel 1..6; nullptr for other numbers.
    QLabel* StatusPanel(int panel) const;

    // --- the table ---------------------------------------------------------------------------

    /// The cadastre table of the run.
    Kataster& Tabelle() { return m_kataster; }
    KatasterModell& Modell() const { return *m_modell; }
    QTableView* Grid() const { return m_tabelle; }
    Stempelnummerierung& Nummerierung() { return m_nummerierung; }

    /// ComboColVis for the view `ansicht`, then the grid and the search column box anew; the
    /// widths are saved under "ColWidths". False when the views file has no such view.
    bool SpaltenansichtAnwenden(const std::string& ansicht);
    /// The name of the view the view box shows.
    std::string Spaltenansicht() const;

    /// A left click on header `abschnitt`: with btnMehrfachsortierung the column joins the sort
    /// list and the table is sorted by the list, ascending; without it the table is sorted by the
    /// column alone, ascending, and descending on a second click.
    void KopfKlick(int abschnitt);
    /// A right click on a header: with btnMehrfachsortierung the last column leaves the sort list
    /// and the table is sorted by what is left; an empty list leaves the order as it is.
    void KopfRechtsKlick();
    /// The sort list of the multi-sort.
    const Sortierliste& Mehrfachsortierung() const { return m_sortierliste; }

    /// The Delete key: with the grid unlocked, ZeilenLöschenMitFrage for the selected rows; a
    /// locked grid deletes nothing.
    void ZeilenLöschen();
    /// btnStempelPlus: FlurstückZahlenformat with its question.
    void StempelPlus();
    /// ALBDatenAnsichtManuell: FormALBAnsicht, and the ticked columns shown.
    void AnsichtManuell();
    /// ALBDatenSpalteEdit: a copy of ALB_DatenbankSpalten.dat beside it (KonfigDateiSichern with
    /// ZeitStempelText), then the file opened in the system's editor. A failed copy is shown and
    /// nothing is opened.
    void AnsichtsdateiBearbeiten();
    /// ALBDatenSpalteNeu: the view box filled anew from ALB_DatenbankSpalten.dat; the view shown
    /// stays when the file still has it, else "alles" is applied.
    void AnsichtenNeuLesen();
    /// ALBbtnDbSpaltenbreite_Click: each shown column as wide as its caption and the widest of its
    /// longest cells as the grid draws them (check box columns keep their width); the widths are
    /// saved.
    void SpaltenbreitenAnpassen();
    /// ALBDatenSpalteMin: each shown column shrunk to the width of its caption, `Flurstück`
    /// shaded, so that the whole table fits the window; the widths are saved.
    void SpaltenMinimieren();

    /// The column widths in the form of "ColWidths".
    std::string Spaltenbreiten() const;

    // --- output: save as, report, register extract ------------------------------------------

    /// btnSpeichernUnter: the save dialog with the filters of ausgabe::SpeicherFilter, XML chosen
    /// first, in the job's folder; then SpeichernUnter. Cancel ends silently.
    void SpeichernUnterDialog();
    /// ALBDatenSpeichernUnter of the table in the format of filter `filter` (its description, as
    /// the dialog returns it) under `gewählt`, with the questions through the UI port. A filter
    /// that names none of the formats saves nothing and returns Fehler. The GEOgraf entry shows
    /// FormExportGG first (GeografAusgeben).
    Ergebnis SpeichernUnter(const QString& filter, const std::filesystem::path& gewählt);
    /// btnBericht: the HTML report (CreateGridReport) into `datei`, then opened in the browser.
    Ergebnis Bericht(const std::filesystem::path& datei);
    /// btnPDFALB: the register extract of the parcel of the current row (else of the first selected
    /// row) into the working directory, then opened in the PDF viewer. Returns the file written;
    /// empty when there was no row or the file could not be written (the user is told).
    std::filesystem::path AuszugErstellen();

    // --- the search bar ----------------------------------------------------------------------

    /// The search button (CmdFlurixSuchbegriff): the term of FlurixSuchbegriff in the column of
    /// FlurixSuchenInFeld, within the pair of FlurixSuchbegriffGemarkung when one is chosen; the
    /// hits selected in the grid, the first one scrolled to. Returns the number of hits.
    std::size_t Suchen();

    // --- the toolbar group btnMarkierung -----------------------------------------------------

    void EigentümerGGStempel(); ///< btnDbEigentümerGGStempel
    void MarkierungSpeichern(); ///< btnDbMarkierungSpeichern, with its save dialog
    void MarkierungLaden();     ///< btnDbMarkierungLaden, with its open dialog
    void FlurstückMarkieren();  ///< btnDbFlurstückMarkieren
    void MarkierungErzeugen();  ///< btnDbMarkierungErzeugen
    void MarkerErzeugen();      ///< btnDbMarkerErzeugen
    void MarkierungLöschen();   ///< btnDbMarkierungLöschen
    void MarkierungAlle();      ///< btnDbMarkierungAlle

protected:
    /// The window's close button (Form_QueryUnload): the same question as Beenden; No keeps the
    /// program running. While a load runs the window can't be closed.
    void closeEvent(QCloseEvent* ereignis) override;
    /// The Delete key of the grid.
    bool eventFilter(QObject* objekt, QEvent* ereignis) override;

private:
    /// A toolbar command: an action with the style's icon.
    QAction* Befehl(const QString& name, QStyle::StandardPixmap symbol, const QString& text,
                    const QString& tipp);
    /// A toolbar key that opens the menu of its group.
    QToolButton* Gruppenknopf(const QString& name, QStyle::StandardPixmap symbol,
                              const QString& text, const QString& tipp);
    void BedienelementeAnlegen();
    QToolBar* SuchleisteAnlegen();
    void MarkierungsgruppeAnlegen();
    void WerkzeugeAnlegen();
    void AusgabeAnlegen();
    /// The file in the system's program; nothing when the window runs without a screen
    /// (offscreen), where no viewer could be seen.
    void DateiZeigen(const std::filesystem::path& datei);
    void TabelleAnlegen();
    void StatusleisteAnlegen();
    void DateiLadenZeitgeber();
    void NasStapelZeitgeber();
    void KarteZeitgeber();
    void TimerEnd(int exitcode);
    void Sperren(bool gesperrt);
    /// The binding of a load or a filling to this window.
    import::Ladebindung Bindung();
    /// The boxes after a load or a filling.
    void Geladen(const import::Ladeergebnis& geladen);

    /// Work that replaces, reorders or re-columns the table: the model is reset around it, the
    /// scroll position kept.
    void Umbauen(const std::function<void()>& arbeit);
    /// The GEOgraf branch of SpeichernUnter: the export dialog; in mark mode (a row is marked) the
    /// marks become the selection, and a table sorted by a header click is sorted by the stamp
    /// numbers first; then the question and stem + ".out".
    Ergebnis GeografAusgeben(const std::filesystem::path& gewählt);
    /// Work on cells (marks) and the selection: the grid repaints and shows the selection.
    void Zellenarbeit(const std::function<void()>& arbeit);
    /// After a reset: widths and selection of the table into the grid.
    void NachUmbau();
    /// The column widths of the table (twips) into the grid (pixels).
    void BreitenAnwenden();
    /// Pixels per twip of the grid's screen and font.
    double PixelJeTwip() const;
    /// The table's selection into the grid, without mirroring it back.
    void AuswahlZeigen();
    /// The grid's selection change into the table, with the count in panel 1.
    void AuswahlÜbernehmen(const QItemSelection& neu, const QItemSelection& alt);
    void SpaltenbreitenSichern() const;
    void SpaltenbreitenWiederherstellen();
    /// FlurixSuchenInFeld anew: the shown columns but check boxes, the chosen one kept.
    void SuchspaltenFüllen();
    /// FlurixSuchbegriffGemarkung anew: an empty entry (no pair), then the entries.
    void GemarkungsboxFüllen(const std::vector<std::string>& einträge, bool ausKennzeichen);
    void AnsichtsboxSetzen(const std::string& ansicht);
    /// ComboSpaltenansicht: "alles", built in, then the views the start-up read from the file.
    void AnsichtsboxFüllen();
    /// Gives the shown columns `breite(column)` twips, then shows and saves the widths.
    void BreitenSetzen(const std::function<int(const KatasterSpalte&, int abschnitt)>& breite);
    void HilfeAnlegen();
    void ZurErstenAuswahl();
    QString Auftragsordner() const;
    void SortierungZeigen();

    Programmzustand& m_zustand;
    Zahlenformat& m_format;
    QtOberfläche& m_ui;

    Kataster m_kataster;
    Stempelnummerierung m_nummerierung;
    KatasterModell* m_modell = nullptr;
    QPointer<FormAlkis> m_nasFenster; ///< a top-level window of its own, deleted with this one
    import::ImportOptionen m_optionen; ///< of the last import dialog; kept for the search

    QToolBar* m_werkzeugleiste = nullptr;
    QToolBar* m_suchleiste = nullptr;
    QComboBox* m_spaltenansicht = nullptr;
    QTableView* m_tabelle = nullptr;
    QLineEdit* m_suchbegriff = nullptr;
    QComboBox* m_suchspalte = nullptr;
    QComboBox* m_gemarkung = nullptr;
    bool m_gemarkungAusKennzeichen = false; ///< the box holds the pairs of BoxGemFlurNASFüllen
    QAction* m_entsperren = nullptr;
    QAction* m_nachfragen = nullptr;
    QAction* m_mehrfachsortierung = nullptr;
    std::array<QLabel*, 6> m_panels{};
    QProgressBar* m_fortschritt = nullptr;

    Sortierliste m_sortierliste;
    std::string m_einzelsortierung; ///< key of the last sort by one header click
    bool m_absteigend = false;      ///< that sort ran descending
    bool m_auswahlSpiegeln = true;  ///< grid selection changes go into the table
    bool m_breitenSetzen = false;   ///< the grid's widths are being set from the table

    std::filesystem::path m_benutzerordner;
    std::function<bool(const QUrl&)> m_dateiÖffnen;
    bool m_dateiÖffnenGesetzt = false; ///< not the system's: it opens offscreen as well
    /// The extract lives as long as the window: its continuation state carries over.
    std::unique_ptr<report::Registerauszug> m_auszug;
    std::function<void(int)> m_programmEnde = [](int code) { QCoreApplication::exit(code); };
    QString m_letzterFilter;     ///< the open dialog's filter of the last load in this run
    bool m_beschaeftigt = false; ///< a load runs
    bool m_beendet = false;      ///< Beenden has run; the process is ending
};

} // namespace flurix::gui
