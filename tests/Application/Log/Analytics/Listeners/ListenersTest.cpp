#include <gmock/gmock.h>

#include "Application/Log/Analytics/Listeners/ActionListener.h"
#include "Application/Log/Analytics/Listeners/ApplicationListener.h"
#include "Application/Log/Analytics/Listeners/GeneralListener.h"
#include "Application/Log/Analytics/Reports/MemoryUsageReporterInterface.h"
#include "tests/support/MemoryStorage.h"

namespace qel::log::analytics::listeners {
namespace {

using namespace broadcaster::event;
using testing::ElementsAre;

const std::string location = "User|Location||set-on-backend=3F0A9C12-7B4E-4D21-9E6A-5C8B2D7F1A04";

class ListenersTest : public testing::Test {
 protected:
  test::MemoryStorage storage_;
  CipDatabases& databases_ = storage_.initialized();
};

TEST_F(ListenersTest, ActionsKeepTheirAreaNameAndDetails) {
  ActionListener listener(databases_);
  listener.onBcfAction({{"Import", {{"Topics", "12"}, {"File", "a.bcf"}}}});
  listener.onHelpAction({{"Search", {}}});
  listener.onProjectManagerAction({{"Open", {{"Kind", "Recent"}}}});
  listener.onGraphicAction({{"", {{"Mode", "3D"}}}});
  EXPECT_THAT(storage_.recorded(),
              ElementsAre("BCF|Action|Import|File=a.bcf;Topics=12", "Help|Action|Search|",
                          "Project Manager|Action|Open|Kind=Recent", "Graphic|Action||Mode=3D"));
}

/// Notes its calls as items, so that their place among the others can be seen.
class NotingReporter : public reports::MemoryUsageReporterInterface {
 public:
  explicit NotingReporter(CipDatabases& databases) : databases_(databases) {}
  void reportDetailedMemoryUsageOfCurrentProcessForCrash() const override { note("process"); }
  void reportDetailedMemoryUsageOfSystemForCrash() const override { note("system"); }

 private:
  void note(const std::string& what) const {
    ActionListener(databases_).onHelpAction({{what, {}}});
  }

  CipDatabases& databases_;
};

class ApplicationListenerTest : public ListenersTest {
 protected:
  ApplicationListener listener_{databases_, std::make_shared<NotingReporter>(databases_),
                                storage_.webUpdateReporter};
};

TEST_F(ApplicationListenerTest, AStartTellsOfWebUpdatesOnlyIfThereIsSomethingToTell) {
  listener_.onApplicationStarted({{"5.2"}});
  EXPECT_EQ(storage_.webUpdateReporter.resets, 0);
  storage_.webUpdateReporter.counts = {3, 0};
  listener_.onApplicationStarted({{"5.3"}});
  EXPECT_EQ(storage_.webUpdateReporter.resets, 1);
  EXPECT_THAT(storage_.recorded(), ElementsAre("Application|Started|5.2|Exception Code=0", location,
                                               "Application|Started|5.3|Exception Code=0", location,
                                               "WebUpdate|Reports||corrupt package=0;success=3"));
}

TEST_F(ApplicationListenerTest, ACrashIsFollowedByTheMemoryOfProcessAndSystem) {
  listener_.onApplicationCrashed({{"access violation"}, -1073741819});
  EXPECT_THAT(storage_.recorded(),
              ElementsAre("Application|Crashed|access violation|Exception Code=3221225477",
                          "Help|Action|process|", "Help|Action|system|"));
}

TEST_F(ApplicationListenerTest, StopsAndAssertionsAreRecorded) {
  listener_.onApplicationStopped({{"bye"}});
  listener_.onApplicationAsserted(
      {{"assert"}, {"no pipe", "connect", "Pipes", -5, assert::AssertType::Precondition}});
  listener_.onApplicationAsserted({{""}, {}});
  EXPECT_THAT(storage_.recorded(),
              ElementsAre("Application|Stopped|bye|Exception Code=0",
                          "Application|Asserted|assert|Filename=Pipes;Function Name=connect;Line "
                          "Number=-5;Message=no pipe;Type=Precondition",
                          "Application|Asserted||Line Number=0;Type=Assertion"));
}

class LateEvent : public GeneralEventInterface {
 public:
  std::string getCategory() const override { return "License"; }
  std::string getSubCategory() const override { return "Check"; }
  std::string getEvent() const override { return "Renewed"; }
  std::map<std::string, std::string> getDetails() const override { return {{"Days", "30"}}; }
};

TEST_F(ListenersTest, AGeneralEventLivesUntilItIsWritten) {
  GeneralListener listener(databases_);
  auto event = std::make_shared<const LateEvent>();
  const std::weak_ptr<const LateEvent> watched = event;
  listener.onGeneralAction(std::move(event));
  EXPECT_FALSE(watched.expired());
  EXPECT_THAT(storage_.recorded(), ElementsAre("License|Check|Renewed|Days=30"));
  EXPECT_TRUE(watched.expired());
}

}  // namespace
}  // namespace qel::log::analytics::listeners
