#include "gui_testhilfen.hpp"

#include "core/cp1252.hpp"
#include "gui/qt_text.hpp"

#include <QAbstractButton>
#include <QAction>
#include <QEventLoop>
#include <QLabel>
#include <QPushButton>
#include <QStandardPaths>
#include <QStatusBar>

#include <array>
#include <memory>

namespace flurix::test {
namespace {

// One QApplication for the whole test program, made before the first test and deleted after the
// last one: deleted by a static destructor, it would outlive Qt's own statics and crash on exit.
class QtUmgebung : public ::testing::Environment {
public:
    void SetUp() override {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        // Whatever a window saves for the user goes to Qt's test folders, not the user's own.
        QStandardPaths::setTestModeEnabled(true);
        m_app = std::make_unique<QApplication>(m_argc, m_argv.data());
    }
    void TearDown() override { m_app.reset(); }

private:
    int m_argc = 1;
    char m_name[9] = "test_gui";
    std::array<char*, 2> m_argv{m_name, nullptr};
    std::unique_ptr<QApplication> m_app;
};

[[maybe_unused]] const ::testing::Environment* const qtUmgebung =
    ::testing::AddGlobalTestEnvironment(new QtUmgebung);

// The installation of a Hauptfenster and the start-up over it, before the window is made.
Ergebnis Starten(const TempOrdner& ordner, Programmzustand& zustand, Zahlenformat& format,
                 Oberfläche& ui, std::string_view ansichten) {
    const auto konfig = zustand.installation.Konfig();
    DateiSchreiben(konfig / "Flurix.dat",
                   "tempArbeitsverzeichnis =" + (ordner / "arbeit").string() + "\r\n");
    DateiSchreiben(konfig / "WebService.fil", "");
    if (!ansichten.empty())
        DateiSchreiben(zustand.installation.Spaltenansichten(), Utf8NachCp1252(ansichten));
    Ergebnis start = Programmstart(zustand, "", format, ui);
    EXPECT_TRUE(start) << start.Meldung();
    return start;
}

} // namespace

Beantworter::Beantworter(std::vector<QMessageBox::StandardButton> folge)
    : m_folge(std::move(folge)) {
    m_zeitgeber.setInterval(5);
    QObject::connect(&m_zeitgeber, &QTimer::timeout, [this] { Antworten(); });
    m_zeitgeber.start();
}

void Beantworter::Antworten() {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box || !box->isVisible())
        return;
    QAbstractButton* vorgabe = box->defaultButton();
    QStringList beschriftungen;
    for (const auto knopf :
         {QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel, QMessageBox::Ok})
        if (QAbstractButton* k = box->button(knopf))
            beschriftungen << k->text();
    boxen.push_back({box->windowTitle(), box->text(), box->icon(), box->standardButtons(),
                     vorgabe ? box->standardButton(vorgabe) : QMessageBox::NoButton,
                     beschriftungen});
    const QMessageBox::StandardButton wahl =
        m_folge.empty() ? QMessageBox::NoButton
                        : m_folge[std::min(boxen.size(), m_folge.size()) - 1];
    QAbstractButton* knopf = wahl == QMessageBox::NoButton ? vorgabe : box->button(wahl);
    if (!knopf) {
        ADD_FAILURE() << "the box has no such button: " << gui::Utf8(box->text());
        box->reject();
        return;
    }
    knopf->click();
}

QStringList Beantworter::Beschreibungen() const {
    QStringList texte;
    for (const Box& box : boxen)
        texte << Beschreibung(box);
    return texte;
}

QString Beschreibung(const Box& box) {
    const char* const symbole[] = {"ohne", "Information", "Warnung", "Fehler", "Frage"};
    QStringList knöpfe;
    for (const auto knopf :
         {QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel, QMessageBox::Ok})
        if (box.knöpfe.testFlag(knopf))
            knöpfe << box.beschriftungen.value(static_cast<int>(knöpfe.size())) +
                          (box.vorgabe == knopf ? QStringLiteral("*") : QString());
    return QStringLiteral("[%1] \"%2\" [%3]: %4")
        .arg(QString::fromUtf8(symbole[std::clamp(static_cast<int>(box.symbol), 0, 4)]), box.titel,
             knöpfe.join(u'|'), box.text);
}

Mitschrift::~Mitschrift() {
    std::string text = m_text;
    const std::string ordner = m_ordner.string();
    for (auto i = text.find(ordner); !ordner.empty() && i != std::string::npos;
         i = text.find(ordner, i))
        text.replace(i, ordner.size(), "<ordner>");
    EXPECT_EQ(GoldenVergleich(text, Testdaten() / "gui" / "mitschrift" / (m_name + ".txt")), "");
}

Mitschrift& Mitschrift::operator<<(const QString& text) {
    m_text += gui::Utf8(text) + "\n";
    return *this;
}

void Warten(const std::function<bool()>& fertig) {
    for (int i = 0; i < 400 && !fertig(); ++i) {
        QEventLoop schleife;
        QTimer::singleShot(5, &schleife, &QEventLoop::quit);
        schleife.exec();
    }
}

Hauptfenster::Hauptfenster(std::string_view ansichten)
    : start(Starten(ordner, zustand, format, ui, ansichten)) {
    fenster.ProgrammEndeSetzen([this](int code) { exitcode = code; });
    fenster.BenutzerordnerSetzen(ordner / "benutzer");
    fenster.DateiÖffnerSetzen([this](const QUrl& adresse) {
        geöffnet.push_back(adresse);
        return true;
    });
}

void Hauptfenster::Auslösen(const char* aktion) {
    if (auto* a = Element<QAction>(aktion))
        a->trigger();
}

QString Panel(const gui::FormDatenbank& fenster, int nummer) {
    const auto* label = fenster.statusBar()->findChild<QLabel*>(QString::number(nummer));
    return label ? label->text() : QStringLiteral("<fehlt>");
}

QStringList Einträge(const QComboBox& box) {
    QStringList texte;
    for (int i = 0; i < box.count(); ++i)
        texte << box.itemText(i);
    return texte;
}

} // namespace flurix::test
