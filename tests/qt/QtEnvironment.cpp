// The one QApplication of the Qt suites. It must be gone before the process's static objects
// are destroyed: Qt's own globals go with them, and an application outliving them crashes
// at exit.
#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>
#include <memory>

namespace {

class QtEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
        app_ = std::make_unique<QApplication>(argc_, argv_);
    }
    void TearDown() override { app_.reset(); }

private:
    int argc_ = 1;
    char name_[8] = "test_qt";
    char *argv_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> app_;
};

[[maybe_unused]] ::testing::Environment *const gQtEnvironment = ::testing::AddGlobalTestEnvironment(new QtEnvironment);

}  // namespace
