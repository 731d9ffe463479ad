#include "tools/collector/SessionPage.h"

#include <string_view>

#include <kainjow/mustache.hpp>
#include <openssl/evp.h>

#include "tools/collector/PageFiles.h"
#include "tools/collector/Sha256.h"
#include "tools/report/HtmlReport.h"

namespace qel::collector {
namespace {

constexpr const char* htmlType = "text/html; charset=utf-8";

std::string base64(const Sha256& digest) {
  std::string text(digest.size() * 2, '\0');
  text.resize(static_cast<std::size_t>(EVP_EncodeBlock(
      reinterpret_cast<unsigned char*>(text.data()),
      reinterpret_cast<const unsigned char*>(digest.data()), static_cast<int>(digest.size()))));
  return text;
}

/// A policy that permits the page's own style and nothing else.
std::string policyFor(const std::string& html) {
  constexpr std::string_view opening = "<style>";
  const auto begin = html.find(opening) + opening.size();
  const auto style = html.substr(begin, html.find("</style>") - begin);
  return "default-src 'none'; style-src 'sha256-" + base64(sha256(style)) +
         "'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
}

}  // namespace

records::SessionRecords recordsOf(const std::string& id, const std::vector<StoredRecord>& stored) {
  std::vector<records::RecordText> texts;
  texts.reserve(stored.size());
  for (const auto& [isEnvironment, text, count] : stored) {
    texts.push_back(
        {isEnvironment ? records::Table::Environments : records::Table::Events, text, count});
  }
  return {id, texts};
}

ResultTable sessionTable(const records::SessionRecords& records) {
  ResultTable table{{"time", "category", "subcategory", "event", "details", "count"}, {}, {}};
  for (const records::Event& event : records.events) {
    table.rows.push_back({event.time, event.category, event.subcategory, event.event,
                          detailsOf(event), event.count});
  }
  return table;
}

AdminPage sessionPage(const records::SessionRecords& records, bool isShortened) {
  std::vector<std::string> remarks;
  if (isShortened) {
    remarks.emplace_back(
        "The session has more records than this page shows: older ones are left out. The command"
        " qel-support report shows all of them.");
  }
  std::string html = report::htmlReport(records.session, records.events, remarks, "/sessions");
  std::string policy = policyFor(html);
  return {std::move(html), 200, htmlType, {{"Content-Security-Policy", std::move(policy)}}};
}

AdminPage messagePage(int status, const std::string& sentence, const std::string& beginning) {
  kainjow::mustache::mustache page{std::string(messageTemplate)};
  kainjow::mustache::data texts("sentence", sentence);
  if (!beginning.empty()) {
    texts["beginning"] = beginning;
  }
  return {page.render(texts), status, htmlType};
}

}  // namespace qel::collector
