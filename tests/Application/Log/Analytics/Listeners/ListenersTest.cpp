// What listeners record of each notification is tested with the whole sample session.

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

class ListenersTest : public testing::Test {
 protected:
  test::MemoryStorage storage_;
  CipDatabases& databases_ = storage_.initialized();
};

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

TEST_F(ListenersTest, ACrashIsFollowedByTheMemoryOfProcessAndSystem) {
  ApplicationListener listener(databases_, std::make_shared<NotingReporter>(databases_),
                               storage_.webUpdateReporter);
  listener.onApplicationCrashed({{"access violation"}, -1073741819});
  EXPECT_THAT(storage_.recorded(),
              ElementsAre("Application|Crashed|access violation|Exception Code=3221225477",
                          "Help|Action|process|", "Help|Action|system|"));
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
