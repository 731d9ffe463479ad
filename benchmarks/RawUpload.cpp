#include "benchmarks/RawUpload.h"

#include <cstdlib>
#include <iostream>

#include <curl/curl.h>

namespace qel::benchmarks {

void RawUpload::Free::operator()(void* handle) const { curl_easy_cleanup(handle); }

void RawUpload::FreeList::operator()(void* list) const {
  curl_slist_free_all(static_cast<curl_slist*>(list));
}

RawUpload::RawUpload(const ServerProcess& server) {
  const std::string host = ServerProcess::host;
  curl_global_init(CURL_GLOBAL_DEFAULT);
  handle_.reset(curl_easy_init());
  auto* headers =
      curl_slist_append(nullptr, (std::string("Content-Type: ") + server.contentType).c_str());
  headers = curl_slist_append(headers, "Expect:");
  headers_.reset(headers);
  connectTo_.reset(curl_slist_append(nullptr, (host + "::" + server.address()).c_str()));
  curl_easy_setopt(handle_.get(), CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(handle_.get(), CURLOPT_URL, ("https://" + host + server.path).c_str());
  curl_easy_setopt(handle_.get(), CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
  curl_easy_setopt(handle_.get(), CURLOPT_PROXY, "");
  curl_easy_setopt(handle_.get(), CURLOPT_CONNECT_TO, connectTo_.get());
  curl_easy_setopt(handle_.get(), CURLOPT_CAINFO, ServerProcess::caFile().c_str());
  curl_easy_setopt(handle_.get(), CURLOPT_CAPATH, nullptr);
  curl_easy_setopt(handle_.get(), CURLOPT_POST, 1L);
  curl_easy_setopt(handle_.get(), CURLOPT_HTTPHEADER, headers);
}

void RawUpload::post(const std::string& body) {
  curl_easy_setopt(handle_.get(), CURLOPT_POSTFIELDS, body.data());
  curl_easy_setopt(handle_.get(), CURLOPT_POSTFIELDSIZE_LARGE,
                   static_cast<curl_off_t>(body.size()));
  long status = 0;
  const CURLcode code = curl_easy_perform(handle_.get());
  curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
  if (code != CURLE_OK || status != 204) {
    std::cerr << "benchmarks: " << curl_easy_strerror(code) << ", status " << status << '\n';
    std::abort();
  }
}

}  // namespace qel::benchmarks
