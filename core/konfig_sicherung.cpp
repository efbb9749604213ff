#include "core/konfig_sicherung.hpp"

#include <zip.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <fstream>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

namespace flurix {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view Prüfdatei = "#prüfe_schreibrecht#.dat";
constexpr std::string_view TitelKeinRecht = "Änderungen an den Systemdateien nicht möglich!";
constexpr std::string_view TitelSicherung = "Flurix Systemsicherung   ";
constexpr std::string_view TextÜberschreiben = "Datei schon vorhanden! Überschreiben?   ";
constexpr std::string_view TextEinlesen =
    "Systemsicherung einlesen? Alle Daten werden überschrieben!   ";
constexpr std::string_view TextWirklich =
    "Sollen die Systemdateien wirklich überschrieben werden?   ";
constexpr std::string_view FehlerErstellen = "Fehler beim Zip-Datei erstellen!   ";
constexpr std::string_view FehlerZusammenstellen = "Fehler beim Daten zusammenstellen!   ";
constexpr std::string_view FehlerSchreiben = "Fehler beim Zip-Datei schreiben!   ";
constexpr std::string_view FehlerÖffnen = "Fehler beim Zip-Datei öffnen!   ";

Ergebnis Fehlschlag(Oberfläche& ui, std::string_view text) {
    ui.Meldung(text, ProduktTitel, Stil::Fehler);
    return Ergebnis::Fehlschlag(std::string(text));
}

struct ArchivVerwerfer {
    void operator()(zip_t* archiv) const noexcept { zip_discard(archiv); }
};
using Archiv = std::unique_ptr<zip_t, ArchivVerwerfer>;

struct EintragSchließer {
    void operator()(zip_file_t* eintrag) const noexcept { zip_fclose(eintrag); }
};
using Eintrag = std::unique_ptr<zip_file_t, EintragSchließer>;

// Removes a temporary file or folder when the work ends, whichever way it ends. After the final
// rename there is nothing left to remove.
class Aufräumen {
public:
    explicit Aufräumen(fs::path pfad) : m_pfad(std::move(pfad)) {}
    Aufräumen(const Aufräumen&) = delete;
    Aufräumen& operator=(const Aufräumen&) = delete;
    Aufräumen(Aufräumen&&) = delete;
    Aufräumen& operator=(Aufräumen&&) = delete;
    ~Aufräumen() {
        std::error_code ec;
        fs::remove_all(m_pfad, ec);
    }

private:
    fs::path m_pfad;
};

// A hidden name in `ordner` made from `wofür`, unique within the process: the temporary archive
// beside the chosen one, or the scratch folder of a restore.
fs::path Hilfsname(const fs::path& ordner, std::string_view wofür) {
    static std::atomic<unsigned> zähler{0};
    const auto takt = std::chrono::steady_clock::now().time_since_epoch().count();
    return ordner / ("." + std::string(wofür) + "." + std::to_string(takt) + "-" +
                     std::to_string(zähler++) + ".tmp");
}

// One thing to put into the archive or take out of it: the path relative to the folder, and
// whether it is a folder.
struct Inhalt {
    fs::path relativ;
    std::string name; ///< name in the archive, "/" between the parts
    bool ordner = false;
};

// Everything below the folder, sorted by name so that two backups of the same folder list the same
// way. The archive itself and its temporary file are left out where they lie in the folder.
// Nothing when the folder can't be listed.
std::optional<std::vector<Inhalt>> OrdnerInhalt(const fs::path& konfigordner,
                                                const std::array<fs::path, 2>& auslassen) {
    std::vector<Inhalt> inhalt;
    std::error_code ec;
    for (fs::recursive_directory_iterator it(konfigordner, ec), ende; !ec && it != ende;
         it.increment(ec)) {
        std::error_code ec2;
        const bool ordner = it->is_directory(ec2);
        if (!ordner && !it->is_regular_file(ec2))
            continue; // sockets, pipes, broken links: nothing a backup can hold
        if (std::any_of(auslassen.begin(), auslassen.end(),
                        [&](const fs::path& p) { return fs::equivalent(it->path(), p, ec2); }))
            continue;
        const fs::path relativ = it->path().lexically_relative(konfigordner);
        inhalt.push_back({relativ, relativ.generic_string(), ordner});
    }
    if (ec)
        return std::nullopt;
    std::sort(inhalt.begin(), inhalt.end(),
              [](const Inhalt& a, const Inhalt& b) { return a.name < b.name; });
    return inhalt;
}

// Adds every file and folder to the archive. False when one can't be read or added.
bool ArchivFüllen(zip_t* archiv, const fs::path& konfigordner, const std::vector<Inhalt>& inhalt) {
    for (const auto& teil : inhalt) {
        // ZIP_FL_ENC_GUESS marks UTF-8 names as such, so that other programs show the umlauts.
        if (teil.ordner) {
            if (zip_dir_add(archiv, teil.name.c_str(), ZIP_FL_ENC_GUESS) < 0)
                return false;
            continue;
        }
        const fs::path datei = konfigordner / teil.relativ;
        // libzip reads the file only when the archive is closed; a file that can't be read is a
        // failure of putting the data together, so it is found here.
        if (!std::ifstream(datei, std::ios::binary))
            return false;
        zip_source_t* quelle = zip_source_file(archiv, datei.c_str(), 0, 0);
        if (quelle == nullptr)
            return false;
        if (zip_file_add(archiv, teil.name.c_str(), quelle, ZIP_FL_ENC_GUESS) < 0) {
            zip_source_free(quelle);
            return false;
        }
    }
    return true;
}

// The safe relative path of an archive entry, or nothing when the entry must be refused: an empty
// name, an absolute path (also "C:" or "\" of Windows archives) or a ".." part would place a file
// outside the folder. Backslashes count as separators, as Windows programs write them.
std::optional<Inhalt> SichererEintrag(std::string_view name) {
    std::string pfad(name);
    std::replace(pfad.begin(), pfad.end(), '\\', '/');
    const bool laufwerk = pfad.size() >= 2 && pfad[1] == ':';
    if (pfad.empty() || pfad.front() == '/' || laufwerk)
        return std::nullopt;
    Inhalt inhalt;
    inhalt.ordner = pfad.back() == '/';
    std::size_t anfang = 0;
    while (anfang <= pfad.size()) {
        auto ende = pfad.find('/', anfang);
        if (ende == std::string::npos)
            ende = pfad.size();
        const std::string_view teil(pfad.data() + anfang, ende - anfang);
        if (teil == "..")
            return std::nullopt;
        if (!teil.empty() && teil != ".")
            inhalt.relativ /= teil;
        anfang = ende + 1;
    }
    if (inhalt.relativ.empty())
        return std::nullopt;
    inhalt.name = inhalt.relativ.generic_string();
    return inhalt;
}

// Unpacks one file entry to `ziel`, counting its bytes into `summe`. False when the entry is
// damaged (libzip checks the CRC at its end) or the bytes pass the limit.
bool EintragAuspacken(zip_t* archiv, zip_uint64_t index, const fs::path& ziel,
                      std::uintmax_t& summe) {
    const Eintrag eintrag(zip_fopen_index(archiv, index, 0));
    if (!eintrag)
        return false;
    std::ofstream aus(ziel, std::ios::binary | std::ios::trunc);
    std::array<char, 65536> puffer{};
    for (;;) {
        const zip_int64_t gelesen = zip_fread(eintrag.get(), puffer.data(), puffer.size());
        if (gelesen < 0)
            return false;
        if (gelesen == 0)
            break;
        summe += static_cast<std::uintmax_t>(gelesen);
        if (summe > KonfigHöchstGröße)
            return false;
        aus.write(puffer.data(), static_cast<std::streamsize>(gelesen));
    }
    aus.close();
    return static_cast<bool>(aus);
}

// Checks and unpacks every entry into `zwischenordner`. The entries unpacked, or nothing when the
// archive is refused.
std::optional<std::vector<Inhalt>> ArchivAuspacken(zip_t* archiv, const fs::path& zwischenordner) {
    std::vector<Inhalt> inhalt;
    const zip_int64_t anzahl = zip_get_num_entries(archiv, 0);
    for (zip_int64_t i = 0; i < anzahl; ++i) {
        const auto index = static_cast<zip_uint64_t>(i);
        const char* name = zip_get_name(archiv, index, ZIP_FL_ENC_GUESS);
        if (name == nullptr)
            return std::nullopt;
        auto teil = SichererEintrag(name);
        if (!teil)
            return std::nullopt;
        inhalt.push_back(std::move(*teil));
    }
    std::uintmax_t summe = 0;
    for (std::size_t i = 0; i < inhalt.size(); ++i) {
        const fs::path ziel = zwischenordner / inhalt[i].relativ;
        std::error_code ec;
        fs::create_directories(inhalt[i].ordner ? ziel : ziel.parent_path(), ec);
        if (ec || (!inhalt[i].ordner && !EintragAuspacken(archiv, i, ziel, summe)))
            return std::nullopt;
    }
    return inhalt;
}

// True when each unpacked entry can take its place in the folder: no file stands where a folder
// must be, and no real folder where a file goes.
bool PlatzFrei(const fs::path& konfigordner, const std::vector<Inhalt>& inhalt) {
    for (const auto& teil : inhalt) {
        fs::path pfad = konfigordner;
        for (auto it = teil.relativ.begin(); it != teil.relativ.end(); ++it) {
            pfad /= *it;
            const bool letzter = std::next(it) == teil.relativ.end();
            std::error_code ec;
            const auto status = fs::symlink_status(pfad, ec);
            if (!fs::exists(status))
                break;
            const bool istOrdner = fs::is_directory(fs::status(pfad, ec));
            if ((!letzter || teil.ordner) ? !istOrdner : fs::is_directory(status))
                return false;
        }
    }
    return true;
}

// Moves the unpacked files into the folder. A file is renamed over the old one, which replaces a
// link of that name instead of writing through it.
bool Einsetzen(const fs::path& konfigordner, const fs::path& zwischenordner,
               const std::vector<Inhalt>& inhalt) {
    for (const auto& teil : inhalt) {
        const fs::path ziel = konfigordner / teil.relativ;
        std::error_code ec;
        fs::create_directories(teil.ordner ? ziel : ziel.parent_path(), ec);
        if (ec)
            return false;
        if (teil.ordner)
            continue;
        const fs::path quelle = zwischenordner / teil.relativ;
        fs::rename(quelle, ziel, ec);
        if (ec) // a subfolder on another file system
            fs::copy_file(quelle, ziel, fs::copy_options::overwrite_existing, ec);
        if (ec)
            return false;
    }
    return true;
}

} // namespace

bool KonfigSchreibrechtPrüfen(const fs::path& konfigordner, Oberfläche& ui) {
    const fs::path prüfdatei = konfigordner / Prüfdatei;
    bool geschrieben = false;
    {
        std::ofstream aus(prüfdatei, std::ios::binary | std::ios::trunc);
        aus << "test";
        aus.close();
        geschrieben = static_cast<bool>(aus);
    }
    std::error_code ec;
    const bool vorhanden = geschrieben && fs::exists(prüfdatei, ec);
    const bool gelöscht = vorhanden && fs::remove(prüfdatei, ec);
    if (gelöscht)
        return true;
    std::string ordner = konfigordner.string();
    if (!ordner.ends_with('/'))
        ordner += '/';
    ui.Meldung("Es liegen keine Schreibrechte für Änderungen an den Systemdateien im "
               "Programmverzeichnis     \n" +
                   ordner +
                   "... vor!   \nBitte informieren Sie bei Bedarf Ihren Systemadministrator!   ",
               TitelKeinRecht, Stil::Warnung);
    return false;
}

Ergebnis KonfigSichern(const fs::path& konfigordner, const fs::path& zipdatei, Oberfläche& ui) {
    std::error_code ec;
    if (fs::exists(zipdatei, ec) && ui.Frage({std::string(TextÜberschreiben), ProduktTitel, Knöpfe::JaNein,
                                              Antwort::Ja, Antwort::Ja}) != Antwort::Ja)
        return Ergebnis::Abbruch();

    // Our own empty file under the temporary name: libzip would create nothing before closing, and
    // a folder we can't write to is a failure to create the archive.
    const fs::path temp = Hilfsname(zipdatei.parent_path(), zipdatei.filename().string());
    const Aufräumen tempWeg(temp);
    if (!std::ofstream(temp, std::ios::binary | std::ios::trunc))
        return Fehlschlag(ui, FehlerErstellen);
    int zipFehler = 0;
    Archiv archiv(zip_open(temp.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &zipFehler));
    if (!archiv)
        return Fehlschlag(ui, FehlerErstellen);

    // An empty folder is no backup (and libzip writes no archive without entries).
    const auto inhalt = OrdnerInhalt(konfigordner, {zipdatei, temp});
    if (!inhalt || inhalt->empty() || !ArchivFüllen(archiv.get(), konfigordner, *inhalt))
        return Fehlschlag(ui, FehlerZusammenstellen);

    if (zip_close(archiv.get()) != 0)
        return Fehlschlag(ui, FehlerSchreiben); // the archive stays open; the deleter discards it
    archiv.release();
    fs::rename(temp, zipdatei, ec);
    if (ec)
        return Fehlschlag(ui, FehlerSchreiben);

    const std::string meldung =
        "Zip-Systemsicherung    " + zipdatei.string() + "   " + "erfolgreich erstellt!   ";
    ui.Meldung(meldung, TitelSicherung, Stil::Information);
    return Ergebnis::Ok(meldung);
}

Ergebnis KonfigEinlesen(const fs::path& konfigordner, const fs::path& zipdatei, Oberfläche& ui) {
    for (const std::string_view frage : {TextEinlesen, TextWirklich})
        if (ui.Frage({std::string(frage), ProduktTitel, Knöpfe::JaNein, Antwort::Nein, Antwort::Ja}) !=
            Antwort::Ja)
            return Ergebnis::Abbruch();

    int zipFehler = 0;
    const Archiv archiv(zip_open(zipdatei.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, &zipFehler));
    // An archive without entries restores nothing: it is taken for one that can't be opened.
    if (!archiv || zip_get_num_entries(archiv.get(), 0) <= 0)
        return Fehlschlag(ui, FehlerÖffnen);

    const fs::path zwischenordner = Hilfsname(konfigordner, "einlesen");
    const Aufräumen zwischenWeg(zwischenordner);
    std::error_code ec;
    if (!fs::create_directory(zwischenordner, ec))
        return Fehlschlag(ui, FehlerZusammenstellen);
    const auto inhalt = ArchivAuspacken(archiv.get(), zwischenordner);
    if (!inhalt || !PlatzFrei(konfigordner, *inhalt) ||
        !Einsetzen(konfigordner, zwischenordner, *inhalt))
        return Fehlschlag(ui, FehlerZusammenstellen);
    return Ergebnis::Ok();
}

fs::path KonfigDateiSichern(const fs::path& datei, const std::string& stempel) {
    fs::path kopie = datei;
    kopie += "_" + stempel + ".dat";
    std::error_code ec;
    fs::copy_file(datei, kopie, fs::copy_options::overwrite_existing, ec);
    if (ec)
        throw Fehler("Die Datei \"" + datei.string() + "\" kann nicht nach \"" + kopie.string() +
                     "\" kopiert werden!");
    return kopie;
}

} // namespace flurix
