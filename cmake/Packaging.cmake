# The Debian package, made by "cpack -G DEB" in a build folder (scripts/package.sh). Its
# dependencies come from the shared libraries the programs use (dpkg-shlibdeps), plus LAME, the
# MP3 encoder. The desktop and icon caches are refreshed by the triggers of the packages that
# own them, so the package has no maintainer scripts.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vinora)
set(CPACK_PACKAGE_VENDOR "Brakwater Software")
set(CPACK_PACKAGE_CONTACT "${VINORA_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "record vinyl records and cassettes into audio files and CDs")
string(JOIN "\n" CPACK_PACKAGE_DESCRIPTION
  "Vinora Records Vinyl to CD Converter records a turntable or tape deck from a"
  "sound input, starts when the music starts and cuts each side into tracks at"
  "the gaps. It removes clicks, pops, hiss and rumble, corrects the record speed"
  "and the RIAA curve, normalises the level and saves each track as a WAV or MP3"
  "file with its tags. It burns audio CDs and data discs. The command-line tool"
  "vinora-cli does the same for scripts and batch work.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${VINORA_HOMEPAGE}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS lame)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)
include(CPack)
