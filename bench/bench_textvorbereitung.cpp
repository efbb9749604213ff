// Line-end preparation of large register files, measured against cp of the same file.
//
//   bench_textvorbereitung [megabytes] [folder]        (FLURIX_BENCH_RUNDEN: rounds, default 3)
//
// writes a text file of WLDGE-like lines with LF ends (default 2000 MB = 2,000,000,000 bytes, or
// FLURIX_BENCH_MB; in the system's temp folder unless a folder is given), then times cp, the UNIX
// check with and without replacing, the converter for mixed files, the early stop of the UNIX
// check on a CR LF file of the same size and the line counts, with the peak memory of each step.
// Each step runs once a round; the table shows the median. All files are deleted at the end.

#include "core/oberflaeche.hpp"
#include "import/textvorbereitung.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace flurix;

/// Takes the status texts without showing them; counts them, so the work can't be left out.
class StilleOberfläche final : public Oberfläche {
public:
    void Meldung(std::string_view, std::string_view, Stil) override {}
    Antwort Frage(const Fragestellung& frage) override { return frage.unbeaufsichtigt; }
    void Status(int, std::string_view) override { ++m_status; }
    void Fortschritt(long long, long long) override {}
    bool AbbruchGewünscht() override { return false; }
    void Protokoll(std::string_view) override {}

    long long m_status = 0;
};

/// A small random generator, so the file is the same on every run.
struct Zufall {
    unsigned long long zustand = 0x2545F4914F6CDD1DULL;
    unsigned Zahl(unsigned grenze) {
        zustand = zustand * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<unsigned>(zustand >> 33) % grenze;
    }
};

std::string Ziffern(Zufall& z, int stellen) {
    std::string s;
    for (int i = 0; i < stellen; ++i)
        s += static_cast<char>('0' + z.Zahl(10));
    return s;
}

/// One register line: block digit, district, parcel key and a text field, Windows-1252.
std::string WldgeZeile(Zufall& z) {
    static const char* const texte[] = {
        "M\xFCller, Hans-J\xFCrgen", "Gr\xFCnland", "Ackerland", "Geb\xE4ude- und Freifl\xE4" "che",
        "Stra\xDF" "e", "Waldfl\xE4" "che", "Schmidt, Anna geb. K\xF6hler", "Hauptstra\xDF" "e 12",
    };
    std::string zeile = std::to_string(1 + z.Zahl(9)) + " " + Ziffern(z, 6) + Ziffern(z, 3) +
                        Ziffern(z, 5) + Ziffern(z, 4) + "00 E   01 32 ";
    zeile += texte[z.Zahl(8)];
    zeile.append(z.Zahl(40), ' ');
    zeile += Ziffern(z, 10 + static_cast<int>(z.Zahl(30)));
    zeile += '\n';
    return zeile;
}

/// Writes `bytes` bytes of LF lines; returns the number of lines.
long long DatenErzeugen(const fs::path& datei, unsigned long long bytes) {
    std::ofstream aus(datei, std::ios::binary | std::ios::trunc);
    Zufall z;
    std::string puffer;
    long long zeilen = 0;
    unsigned long long geschrieben = 0;
    while (geschrieben < bytes) {
        puffer.clear();
        while (puffer.size() < 1'000'000 && geschrieben + puffer.size() < bytes) {
            puffer += WldgeZeile(z);
            ++zeilen;
        }
        if (geschrieben + puffer.size() > bytes) { // the last line is cut, but keeps its LF
            puffer.resize(bytes - geschrieben);
            puffer.back() = '\n';
        }
        aus.write(puffer.data(), static_cast<std::streamsize>(puffer.size()));
        geschrieben += puffer.size();
    }
    if (!aus)
        throw std::runtime_error("cannot write " + datei.string());
    return zeilen;
}

/// Resets the peak resident size of this process (Linux 4.0 on); false when not allowed.
bool SpitzeZurücksetzen() {
    std::ofstream clear("/proc/self/clear_refs");
    clear << "5";
    clear.flush();
    return static_cast<bool>(clear);
}

/// Peak resident size of this process in MB (VmHWM).
double SpitzeMb() {
    std::ifstream status("/proc/self/status");
    std::string zeile;
    while (std::getline(status, zeile))
        if (zeile.rfind("VmHWM:", 0) == 0)
            return std::stod(zeile.substr(6)) / 1024.0;
    return -1;
}

struct Messung {
    double sekunden = 0;
    double cpuSekunden = 0; ///< user + system time of this process and of its children
    double spitzeMb = 0;
    std::string ergebnis;
};

double CpuSekunden() {
    double summe = 0;
    for (const int wer : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage r{};
        ::getrusage(wer, &r);
        for (const timeval& t : {r.ru_utime, r.ru_stime})
            summe += static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
    }
    return summe;
}

Messung Messen(const std::function<std::string()>& arbeit) {
    ::sync(); // the writes of the step before don't slow this one down
    SpitzeZurücksetzen();
    const double cpuVorher = CpuSekunden();
    const auto start = std::chrono::steady_clock::now();
    Messung m;
    m.ergebnis = arbeit();
    m.sekunden = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    m.cpuSekunden = CpuSekunden() - cpuVorher;
    m.spitzeMb = SpitzeMb();
    return m;
}

struct Schritt {
    std::string name;
    std::function<std::string()> arbeit;
    std::vector<Messung> messungen;

    double Median() const {
        std::vector<double> zeiten;
        for (const auto& m : messungen)
            zeiten.push_back(m.sekunden);
        std::sort(zeiten.begin(), zeiten.end());
        return zeiten[zeiten.size() / 2];
    }
    template <class Feld> double Kleinstes(Feld feld) const {
        double k = messungen.front().*feld;
        for (const auto& m : messungen)
            k = std::min(k, m.*feld);
        return k;
    }
    template <class Feld> double Größtes(Feld feld) const {
        double g = messungen.front().*feld;
        for (const auto& m : messungen)
            g = std::max(g, m.*feld);
        return g;
    }
};

} // namespace

int main(int argc, char** argv) {
    unsigned long long mb = 2000;
    if (const char* umgebung = std::getenv("FLURIX_BENCH_MB"))
        mb = std::stoull(umgebung);
    if (argc > 1)
        mb = std::stoull(argv[1]);
    int runden = 3;
    if (const char* umgebung = std::getenv("FLURIX_BENCH_RUNDEN"))
        runden = std::max(1, std::stoi(umgebung));
    const fs::path ordner = (argc > 2 ? fs::path(argv[2]) : fs::temp_directory_path()) /
                            ("flurix-bench-text-" + std::to_string(::getpid()));
    fs::create_directories(ordner);
    const fs::path quelle = ordner / "unix.wldge";
    const fs::path kopie = ordner / "kopie.wldge";
    const unsigned long long bytes = mb * 1'000'000ULL;

    std::printf("Erzeuge %llu MB LF-Text in %s ...\n", mb, ordner.c_str());
    const long long zeilen = DatenErzeugen(quelle, bytes);
    std::printf("%lld Zeilen, %llu Byte\n\n", zeilen, bytes);

    if (!SpitzeZurücksetzen())
        std::printf("Hinweis: VmHWM lässt sich nicht zurücksetzen; Spitze MB gilt für den ganzen Lauf.\n");
    StilleOberfläche ui;
    auto jaNein = [](bool b) { return std::string(b ? "true" : "false"); };
    // Each round starts with cp, which also gives the UNIX copy that the third step converts in
    // place and the fifth finds converted.
    std::vector<Schritt> schritte = {
        {"cp (Vergleich)",
         [&] {
             const std::string befehl = "cp '" + quelle.string() + "' '" + kopie.string() + "'";
             return std::string(std::system(befehl.c_str()) == 0 ? "ok" : "FEHLER");
         }, {}},
        {"UnixToPcDatei, ersetzen=false",
         [&] { return jaNein(import::UnixToPcDatei(quelle, false, ui)); }, {}},
        {"UnixToPcDatei, ersetzen=true",
         [&] { return jaNein(import::UnixToPcDatei(kopie, true, ui)); }, {}},
        {"AnsiUnixToAnsiPc, ersetzen=false",
         [&] { return jaNein(import::AnsiUnixToAnsiPc(quelle, false, ui)); }, {}},
        {"UnixToPcDatei auf CR-LF-Datei",
         [&] { return jaNein(import::UnixToPcDatei(kopie, true, ui)); }, {}},
        {"ZeilenZählen",
         [&] { return std::to_string(import::ZeilenZählen(kopie)); }, {}},
        {"AnsiUnixToAnsiPcString",
         [&] { return std::to_string(import::AnsiUnixToAnsiPcString(kopie, ui)); }, {}},
    };
    bool größeStimmt = true;
    for (int runde = 0; runde < runden; ++runde) {
        for (auto& schritt : schritte)
            schritt.messungen.push_back(Messen(schritt.arbeit));
        // after a round the copy is converted: one CR more per line
        größeStimmt = größeStimmt && fs::file_size(kopie) == bytes + static_cast<unsigned long long>(zeilen);
    }
    rusage kinder{};
    ::getrusage(RUSAGE_CHILDREN, &kinder);
    for (auto& m : schritte.front().messungen)
        m.spitzeMb = static_cast<double>(kinder.ru_maxrss) / 1024.0;

    const double cp = schritte.front().Median();
    std::printf("%-34s %8s %8s %8s %8s %7s %10s  %s\n", "Schritt", "Median s", "Min s", "CPU s", "MB/s",
                "zu cp", "Spitze MB", "Ergebnis");
    for (const auto& s : schritte)
        std::printf("%-34s %8.3f %8.3f %8.3f %8.0f %7.2f %10.1f  %s\n", s.name.c_str(), s.Median(),
                    s.Kleinstes(&Messung::sekunden), s.Kleinstes(&Messung::cpuSekunden),
                    static_cast<double>(bytes) / 1e6 / s.Median(), s.Median() / cp,
                    s.Größtes(&Messung::spitzeMb), s.messungen.back().ergebnis.c_str());
    std::printf("\n%d Runden; Median und Min der Wanduhrzeit, CPU s: kleinste Summe aus user und sys "
                "(bei cp die des Kindprozesses);\nSpitze MB: höchster belegter Speicher (VmHWM) im "
                "Schritt, bei cp der des Kindprozesses.\nKopie nach der Umwandlung: %s (Quelle + ein "
                "Byte je Zeile), %lld Statustexte.\n",
                runden, größeStimmt ? "Größe stimmt" : "GRÖSSE FALSCH", ui.m_status);

    fs::remove_all(ordner);
    return größeStimmt ? 0 : 1;
}
