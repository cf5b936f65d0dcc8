# Runs when all else is installed: under which prefix is known only now. `program` is where it went,
# `built_for` where it was meant to go, `everybody` the folder of manifests for browsers.
set(etc ${CMAKE_INSTALL_PREFIX}/etc)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(etc /etc)
endif()
file(INSTALL ${everybody}/etc/ DESTINATION ${etc})

# What names one of the programs by its full path.
set(prefix $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX})
file(GLOB_RECURSE naming $ENV{DESTDIR}${etc}/*/fr.quellvane.orvanta.tab.json
  ${prefix}/lib/mozilla/fr.quellvane.orvanta.tab.json)
file(GLOB templates ${prefix}/share/orvanta/native-messaging/*.json)
foreach(file ${naming} ${templates} ${prefix}/share/applications/fr.quellvane.orvanta.desktop
    ${prefix}/lib/systemd/user/orvanta.service)
  file(READ ${file} text)
  string(REPLACE "${built_for}" "${program}" text "${text}")
  file(WRITE ${file} "${text}")
endforeach()
