// Runs the programs themselves and looks for the user's secret in all that they leave behind.

#include <algorithm>
#include <filesystem>
#include <thread>

#include <gmock/gmock.h>

#include "tests/support/HttpsTestServer.h"
#include "tests/support/Process.h"

namespace qel {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* secret = "dagger&pie!99";

/// The secret plain, percent-encoded, in hexadecimal digits, in Base64, and as it is sent for each
/// of the users. Made with the `xxd` and `base64` commands.
constexpr const char* forms[] = {secret,
                                 "dagger%26pie%2199",
                                 "64616767657226706965213939",
                                 "ZGFnZ2VyJnBpZSE5O",
                                 "YWRhOmRhZ2dlciZwaWUhOTk=",
                                 "Ym9iOmRhZ2dlciZwaWUhOTk="};

bool betrays(const std::string& text) {
  return std::ranges::any_of(
      forms, [&](const char* form) { return text.find(form) != std::string::npos; });
}

std::vector<fs::path> filesUnder(const fs::path& directory) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    if (entry.is_regular_file()) {
      files.push_back(entry.path());
    }
  }
  return files;
}

std::vector<fs::path> betrayersUnder(const fs::path& directory) {
  auto files = filesUnder(directory);
  std::erase_if(files, [](const fs::path& file) { return !betrays(test::contentOf(file)); });
  return files;
}

/// What any user of the machine may see of a running process, and its own user besides.
std::string visible(const test::Process& process) {
  const fs::path system = "/proc/" + std::to_string(process.id());
  return test::contentOf(system / "cmdline") + test::contentOf(system / "environ");
}

constexpr const char* script = R"({"notify": "onApplicationStarted", "text": "x"}
{"notify": "onHelpAction", "name": "search", "details": {"for": "password"}}
{"join": true}
{"stopSending": true}
{"startSending": true}
{"wait": 100}
)";

struct Session {
  const char* user;
  std::string server;
  std::string trusted;
  const char* trace;  ///< what one of the logs then says
};

class SecretsTest : public testing::Test {
 protected:
  SecretsTest() {
    for (const char* name : {"secrets", "left", "left/data", "left/temporary", "left/store"}) {
      fs::create_directory(directory_.path() / name);
    }
    test::write(secrets_ / "users", "ada:" + std::string(secret) + "\nbob:other\n");
    test::write(secrets_ / "secret", secret);
  }

  std::string run(const std::string& program) const {
    return "env TMPDIR=" + (left_ / "temporary").string() + ' ' + program;
  }

  void play(const Session& session, const test::Process& collector) const {
    SCOPED_TRACE(session.trace);
    test::Process host(
        run(QEL_SAMPLE_HOST " --exit-deadline 2 --directory " + (left_ / "data").string() +
            " --server " + session.server + " --ca " + session.trusted + " --user " + session.user +
            " --secret-file " + (secrets_ / "secret").string()),
        script);
    std::string logs;
    while (logs.find(session.trace) == std::string::npos) {
      std::this_thread::yield();
      logs = test::contentOf(left_ / "data" / "qel-sample-host.log") + collector.errors();
    }
    const std::string seen = visible(host) + visible(collector);
    EXPECT_THAT(seen, AllOf(HasSubstr("qel-sample-host"), HasSubstr("qel-collector")));
    EXPECT_THAT(seen, HasSubstr("TMPDIR"));
    EXPECT_FALSE(betrays(seen));
    EXPECT_THAT(betrayersUnder(left_), IsEmpty()) << "while it runs, journals included";
    host.terminate();
    const std::string output = host.readUntil(EOF);
    EXPECT_EQ(host.join(), 0) << host.errors();
    EXPECT_THAT(output, testing::ContainsRegex("broadcast +2 "));
    EXPECT_FALSE(betrays(output + host.errors() + collector.errors()));
  }

  const test::TemporaryDirectory directory_;
  const fs::path secrets_ = directory_.path() / "secrets";
  const fs::path left_ = directory_.path() / "left";
};

TEST_F(SecretsTest, AreInNothingThatTheProgramsLeaveBehindOrShow) {
  test::TestCertificates authority;
  const test::TestCertificates stranger;
  const auto identity = authority.issue("analytics.qel.example");
  test::Process collector(run(COLLECTOR_PROGRAM " --listen 127.0.0.1:0 --credentials " +
                              (secrets_ / "users").string() + " --store " +
                              (left_ / "store" / "store.db").string() + " --certificate " +
                              identity.certificate.string() + " --key " + identity.key.string()));
  const std::string address = collector.readUntil('\n').substr(strlen("listening on "));
  const test::HttpsTestServer refusing(
      {.identity = identity, .answer = [](const auto&) { return test::Reply{.status = 500}; }});
  const std::string trusted = authority.caFile();
  for (const Session& session : {Session{"ada", refusing.address(), trusted, "with status 500"},
                                 {"bob", address, trusted, "with status 401"},
                                 {"ada", "127.0.0.1:1", trusted, "127.0.0.1:1 failed"},
                                 {"ada", address, stranger.caFile(), "certificate"},
                                 {"ada", address, trusted, "204: events"}}) {
    play(session, collector);
  }
  collector.terminate();
  EXPECT_EQ(collector.join(), 0);
  EXPECT_THAT(betrayersUnder(left_), IsEmpty());
  for (const auto& file : filesUnder(left_)) {
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600)) << file;
  }
  EXPECT_THAT(filesUnder(left_), testing::SizeIs(testing::Ge(5U)));
  // The search finds what there is, and the secret did travel.
  EXPECT_THAT(betrayersUnder(secrets_), testing::SizeIs(2));
  EXPECT_TRUE(betrays(refusing.requests().front().head));
}

}  // namespace
}  // namespace qel
