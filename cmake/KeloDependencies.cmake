# The libraries below KeloAPI, each with the oldest version that will do and the reason. What the tests
# run over are Debian 12's: libcurl 7.88, OpenSSL 3.0, simdjson 3.0, uriparser 0.9.7, zlib 1.2.13.
# docs/getting-started.md names these versions, too.

# 7.77 takes certificates from memory (CURLOPT_CAINFO_BLOB); 7.80 lets a transfer look at a kept
# connection before it is used, so that stray bytes on it are never taken for a response
# (CURLOPT_PREREQFUNCTION); 7.85 names protocols (CURLOPT_PROTOCOLS_STR); 7.87 lets a transfer end
# while a name is looked up (CURLOPT_QUICK_EXIT).
set(KELO_CURL_MINIMUM 7.87)
# The functions are all in 1.1.1, which nobody mends any more.
set(KELO_OPENSSL_MINIMUM 3.0)
# Views point into simdjson's parse and know how it is laid out, which the tests have seen of 3.0.
set(KELO_SIMDJSON_MINIMUM 3.0)
# Before it, a URL with an IP address for a host could be freed twice (CVE-2021-46141).
set(KELO_URIPARSER_MINIMUM 0.9.6)
# The first that was released with an inflate that reads gzip.
set(KELO_ZLIB_MINIMUM 1.2.1)

# kelo_find_at_least(PACKAGE MINIMUM): for packages that call every other minor or major version
# incompatible, so that find_package would refuse the newer ones.
macro(kelo_find_at_least package minimum)
  find_package(${package} REQUIRED)
  if(${package}_VERSION VERSION_LESS ${minimum})
    message(FATAL_ERROR "${package} ${minimum} is needed; here is ${${package}_VERSION}")
  endif()
endmacro()
