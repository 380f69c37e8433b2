# Deployment settings: what differs from one deployment of the service to the next. They end up in
# one generated header, and the pinned certificates in it as scrambled texts.
set(KELO_API_HOST "api.kelo.example" CACHE STRING "Host name of the service's API")
set(KELO_ERROR_DOMAIN "kelo.example" CACHE STRING "Domain of the service's errors")
set(KELO_APPLICATION_GROUP "group.example.kelo" CACHE STRING
  "Application group that the application shares with its extensions")
set(KELO_ENTERPRISE_APPLICATION_GROUP "group.example.kelo.enterprise" CACHE STRING
  "The same for enterprise builds of the application")
set(KELO_QUEUE_LABEL_PREFIX "example.kelo." CACHE STRING "What labels of file queues begin with")
set(KELO_CERTIFICATE_1 "" CACHE FILEPATH "First pinned certificate (PEM)")
set(KELO_CERTIFICATE_2 "" CACHE FILEPATH "Second pinned certificate (PEM)")
option(KELO_DEVELOPMENT_CERTIFICATES
  "Without these two: pin certificates made for this build, as the tests need; never to be packaged"
  ${KELO_BUILD_TESTS})

set(KELO_GENERATED_DIR ${PROJECT_BINARY_DIR}/generated)
set(KELO_CERTIFICATE_DIR ${PROJECT_BINARY_DIR}/certificates)

# The tests' certificates, with keys that exist nowhere else: their stand-in serves with the first,
# and the second shows that a rotation needs no new library.
function(kelo_make_development_certificate name)
  set(pem ${KELO_CERTIFICATE_DIR}/${name}.pem)
  set(key ${KELO_CERTIFICATE_DIR}/${name}.key)
  if(NOT EXISTS ${pem} OR NOT EXISTS ${key})
    find_program(KELO_OPENSSL openssl REQUIRED)
    file(MAKE_DIRECTORY ${KELO_CERTIFICATE_DIR})
    execute_process(
      COMMAND ${KELO_OPENSSL} req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -sha256
        -days 825 -subj "/CN=${name}.kelo.example"
        -addext "subjectAltName=DNS:localhost,DNS:${KELO_API_HOST},IP:127.0.0.1,IP:::1"
        -keyout ${key} -out ${pem}
      ERROR_VARIABLE openssl_says RESULT_VARIABLE failed)
    if(failed)
      message(FATAL_ERROR "openssl could not make ${name}: ${openssl_says}")
    endif()
  endif()
endfunction()

# The scrambled form: each character of the base64 text, exclusive-or a key that moves with its
# position, as two hexadecimal digits; groups are separated by blanks.
function(kelo_scramble pem out)
  file(STRINGS ${pem} lines)
  set(base64 "")
  set(inside FALSE)
  foreach(line IN LISTS lines)
    if(line MATCHES "^-----BEGIN CERTIFICATE-----")
      set(inside TRUE)
    elseif(line MATCHES "^-----END CERTIFICATE-----")
      break()
    elseif(inside)
      string(STRIP "${line}" line)
      string(APPEND base64 "${line}")
    endif()
  endforeach()
  if(base64 STREQUAL "")
    message(FATAL_ERROR "${pem} holds no certificate")
  endif()
  string(HEX "${base64}" hex)
  string(LENGTH "${hex}" length)
  set(scrambled "")
  set(position 0)
  set(at 0)
  while(at LESS length)
    string(SUBSTRING "${hex}" ${at} 2 digits)
    math(EXPR number "0x${digits} ^ ((90 + ${position} * 7) & 127)" OUTPUT_FORMAT HEXADECIMAL)
    string(SUBSTRING "${number}" 2 -1 number)
    string(APPEND scrambled "${number} ")
    math(EXPR at "${at} + 2")
    math(EXPR position "${position} + 1")
  endwhile()
  string(STRIP "${scrambled}" scrambled)
  set(${out} "${scrambled}" PARENT_SCOPE)
endfunction()

if(KELO_CERTIFICATE_1 AND KELO_CERTIFICATE_2)
  set(kelo_pem_1 ${KELO_CERTIFICATE_1})
  set(kelo_pem_2 ${KELO_CERTIFICATE_2})
elseif(KELO_CERTIFICATE_1 OR KELO_CERTIFICATE_2)
  message(FATAL_ERROR "KELO_CERTIFICATE_1 and KELO_CERTIFICATE_2 are set together or not at all")
elseif(KELO_DEVELOPMENT_CERTIFICATES)
  kelo_make_development_certificate(development-1)
  kelo_make_development_certificate(development-2)
  set(kelo_pem_1 ${KELO_CERTIFICATE_DIR}/development-1.pem)
  set(kelo_pem_2 ${KELO_CERTIFICATE_DIR}/development-2.pem)
  install(CODE "message(WARNING \"The installed library pins certificates that were made for tests\")")
endif()
if(kelo_pem_1)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${kelo_pem_1} ${kelo_pem_2})
  kelo_scramble(${kelo_pem_1} KELO_SCRAMBLED_1)
  kelo_scramble(${kelo_pem_2} KELO_SCRAMBLED_2)
else()
  message(STATUS "No certificates to pin (KELO_CERTIFICATE_1 and KELO_CERTIFICATE_2): "
    "no server is accepted but by managers that a host gives its sessions")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/Settings.hpp.in
  ${KELO_GENERATED_DIR}/KeloAPI/Settings.hpp @ONLY)
