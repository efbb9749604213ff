// One QGuiApplication for the map tests (offscreen): text in pictures needs the platform's fonts.
#include <QGuiApplication>

#include <gtest/gtest.h>

#include <array>
#include <memory>

namespace {

// Made before the first test and deleted after the last one: deleted by a static destructor, it
// would outlive Qt's own statics.
class KartenUmgebung : public ::testing::Environment {
public:
    void SetUp() override {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        m_app = std::make_unique<QGuiApplication>(m_argc, m_argv.data());
    }
    void TearDown() override { m_app.reset(); }

private:
    int m_argc = 1;
    char m_name[9] = "test_map";
    std::array<char*, 2> m_argv{m_name, nullptr};
    std::unique_ptr<QGuiApplication> m_app;
};

[[maybe_unused]] const ::testing::Environment* const kartenUmgebung =
    ::testing::AddGlobalTestEnvironment(new KartenUmgebung);

} // namespace
