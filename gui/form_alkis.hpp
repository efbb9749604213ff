#pragma once
// The NAS work window "Flurix-NAS" (FormALKIS): the toolbar of the NAS work, the table list, the
// grid of the chosen table with its filter row, and the protocol box. The work itself is the
// core's (nas::NasArbeitsbereich, nas::NasLauf); the window binds its controls to it.
// The class name, its slots and signals stay ASCII for moc.

#include "core/fehler.hpp"

#include <QMainWindow>
#include <QString>
#include <QStyle>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QAction;
class QCloseEvent;
class QComboBox;
class QLabel;
class QMenu;
class QPlainTextEdit;
class QTableView;
class QToolBar;

// moc reads this header: the core's headers, whose names carry umlauts, stay out of it.
namespace flurix {
class Kataster;
struct Programmzustand;
} // namespace flurix

namespace flurix::nas {
class NasArbeitsbereich;
struct NasLaufauftrag;
struct NasOptionen;
struct SqlAbfrageErgebnis;
enum class NasZiel;
} // namespace flurix::nas

namespace flurix::gui {

class NasFilterzeile;
class NasTabellenModell;
class QtOberfläche;

/// The window of one NAS data set. It owns the session (nas::NasArbeitsbereich) and shows its
/// database; `tabelle` is how "nach Flurix" reaches the main window's table. `zustand` and `ui`
/// must outlive the window. The constructor sends the NAS protocol of `ui` into the window's
/// protocol box; the destructor takes it back.
///
/// Closing (the close box or btnEnde) asks first and then closes the database and emits beendet();
/// btnALKISausblenden hides the window, keeps the database and emits ausgeblendet(). The owner
/// decides what becomes of the window then.
class FormAlkis : public QMainWindow {
    Q_OBJECT

public:
    /// The same type as nas::Tabellenänderung.
    using Tabellenaenderung = std::function<Ergebnis(const std::function<Ergebnis(Kataster&)>&)>;

    FormAlkis(Programmzustand& zustand, QtOberfläche& ui, Tabellenaenderung tabelle,
              QWidget* eltern = nullptr);
    ~FormAlkis() override;
    FormAlkis(const FormAlkis&) = delete;
    FormAlkis& operator=(const FormAlkis&) = delete;
    FormAlkis(FormAlkis&&) = delete;
    FormAlkis& operator=(FormAlkis&&) = delete;

    /// Shows the window and starts `auftrag` by a single-shot timer, so that the window is painted
    /// before the work begins (Timer1). The options are read from the user's settings.
    void Starten(const nas::NasLaufauftrag& auftrag);
    /// The run itself: the controls locked, nas::NasLauf (read, compile and take over when asked,
    /// export), the table list anew. Escape stops the scan. A failed open keeps the data set that
    /// was open, with its table shown again. Every failure has been shown when it returns.
    Ergebnis Laufen(const nas::NasLaufauftrag& auftrag);
    /// True while a run or another long command works.
    bool Beschaeftigt() const { return m_beschaeftigt; }

    // --- the toolbar -------------------------------------------------------------------------

    /// btnDbÖffnen: the open dialog ("NAS (*.xml)", "NAS (*.mdb *.sqlite)"), the options dialog
    /// in front of the window, then the run. Cancel in either ends silently.
    void DbOeffnen();
    /// btnDbSpeichernUnter: the save dialog, then "Speichern unter" of the grid as it is shown.
    void SpeichernUnterDialog();
    /// "Speichern unter" (nas::ALKISspeichernUnter) into `datei` in `format`, with the grid's
    /// query (filter and order), its visible columns in the order shown and its selected rows.
    Ergebnis SpeichernUnter(const std::filesystem::path& datei, nas::NasZiel format);
    /// btnSQLAbfrage: the SQL query dialog.
    void SqlAbfrageDialog();
    /// One statement of the query box (see nas::SqlAbfrageAusführen): a SELECT is shown in the
    /// grid, any other statement is reported with the rows it changed, a failure with its message.
    nas::SqlAbfrageErgebnis SqlAbfrage(const std::string& anweisung);
    /// btnSQLZuordnung: the compilation into Alkis, which the grid then shows.
    Ergebnis Zuordnung();
    /// btnDirektNachFlurix: compilation and transfer into the main window's table.
    Ergebnis DirektNachFlurix();
    /// btnNachFlurix (enabled only while Alkis exists): Alkis into the main window's table.
    Ergebnis NachFlurix();
    /// btnDatenansicht: the current row as a list of field and value.
    void Datenansicht();
    /// btnALKISausblenden: hides the window; the database stays open.
    void Ausblenden();
    /// btnEnde: closes the window as its close box does. False when the user stays.
    bool Beenden();

    // --- the table list and the grid ---------------------------------------------------------

    /// ComboTbl: shows a table of the database in the grid. A table of more than
    /// nas::VisualisierungWarnenAb rows asks first, unless `warnen` is false; Ja to the question
    /// leaves the grid empty and returns false. The columns of AX_Flurstueck that hold geometry
    /// are hidden.
    bool TabelleZeigen(const std::string& tabelle, bool warnen = true);
    /// The filter row's texts as the grid's condition; a text that is no number in a numeric
    /// column is shown as a message and the rows stay. False then.
    bool FilterAnwenden();

    nas::NasArbeitsbereich& Bereich() { return *m_bereich; }
    NasTabellenModell& Modell() const { return *m_modell; }
    QTableView* Grid() const { return m_grid; }
    NasFilterzeile* Filterzeile() const { return m_filterzeile; }
    QComboBox* Tabellenliste() const { return m_tabellen; }
    QPlainTextEdit* Protokollbox() const { return m_protokoll; }
    /// The label above the grid ("Suche:" or the filter hint).
    QLabel* Suchlabel() const { return m_label; }

    /// Folder of the per-user settings (options, column widths); ~/.config/flurix unless set.
    void BenutzerordnerSetzen(std::filesystem::path ordner) {
        m_benutzerordner = std::move(ordner);
    }

signals:
    /// The window was hidden by btnALKISausblenden; the database stays open.
    void ausgeblendet();
    /// The window was ended; its database is closed.
    void beendet();

protected:
    /// The close box and btnEnde: "Wollen Sie den Flurix-NAS jetzt wirklich beenden?"; Ja closes
    /// the database and emits beendet(), Nein keeps the window. Refused while a run works.
    void closeEvent(QCloseEvent* ereignis) override;

private:
    QAction* Befehl(const QString& name, QStyle::StandardPixmap symbol, const QString& text,
                    const QString& tipp);
    void BedienelementeAnlegen();
    QWidget* TabellenbereichAnlegen();
    QMenu* XmlWerkzeugeAnlegen();
    void Sperren(bool gesperrt);
    /// A command of the session: controls locked, the options read, `arbeit` run (a failure it
    /// throws shown), then with `alkisNeu` the table list and grid anew, as Alkis was made anew.
    Ergebnis Arbeiten(bool alkisNeu, const std::function<Ergebnis()>& arbeit);
    /// Table list, buttons and the order's fields from the session as it is now.
    void DatenbestandZeigen();
    /// The grid empty: before the database it reads from may go.
    void GridLeeren();
    /// After work that changed the database: the table list anew and the grid read again.
    void NachÄnderung();
    /// The hidden columns and the kept widths on the grid, the filter row anew.
    void SpaltenEinrichten();
    void SpaltenbreitenSichern() const;
    nas::NasOptionen OptionenLesen() const;
    /// The file dialogs and the calls of the XML tools.
    void XmlWerkzeug(int werkzeug);

    Programmzustand& m_zustand;
    QtOberfläche& m_ui;
    Tabellenaenderung m_tabelle;
    std::unique_ptr<nas::NasArbeitsbereich> m_bereich;

    QToolBar* m_werkzeugleiste = nullptr;
    QAction* m_nachFlurix = nullptr;
    QComboBox* m_tabellen = nullptr;
    QLabel* m_label = nullptr;
    QLabel* m_antrag = nullptr;
    QTableView* m_grid = nullptr;
    NasTabellenModell* m_modell = nullptr;
    NasFilterzeile* m_filterzeile = nullptr;
    QPlainTextEdit* m_protokoll = nullptr;
    QWidget* m_mitte = nullptr;

    std::string m_gezeigt; ///< the table in the grid; "" for none or a query
    std::filesystem::path m_benutzerordner;
    bool m_beschaeftigt = false;
};

} // namespace flurix::gui
