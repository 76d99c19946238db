# What `cmake --install` puts beside the programs, and the Debian package made of it.
# The programs and their manual pages are installed where they are built; this adds the shared
# folder (the language reference and the examples) and the package's description.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/krait/examples
        FILES_MATCHING PATTERN "*.krait")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DATADIR}/krait/docs
        FILES_MATCHING PATTERN "*.md" PATTERN "man" EXCLUDE)

set(CPACK_PACKAGE_NAME krait)
set(CPACK_PACKAGE_VENDOR "The Krait developers")
set(CPACK_PACKAGE_CONTACT "${KRAIT_BUG_ADDRESS}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "satisfiability checker for non-linear arithmetic over bounded variables")
set(CPACK_PACKAGE_DESCRIPTION
    "Krait decides formulae that mix Boolean structure with non-linear arithmetic over bounded
float, int and boole variables, minimises a variable, and does bounded model checking of
transition systems, by conflict-driven clause learning over bounds with interval propagation
under outward rounding. Companions: krait-certify (certified answers), krait-smt2 (SMT-LIB 2),
krait-prove (k-induction), krait-plot (pictures of traces), krait-batch (runs over many inputs).")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_GENERATOR DEB)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://example.org/krait")
# The programs' shared libraries are found by dpkg-shlibdeps; the two scripts need these.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "python3")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "python3-matplotlib, parallel")
include(CPack)
