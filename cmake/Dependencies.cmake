# System libraries by pkg-config. The same list goes into the installed package.

find_package(PkgConfig REQUIRED)
set(QORL_PACKAGES
    expat zlib libpng
    cairo cairo-ft pangocairo pangoft2 fontconfig freetype2
    icu-uc icu-i18n uuid gio-2.0
    xcb xcb-shm xcb-render xcb-randr xcb-xfixes xcb-xinput xcb-xkb xcb-icccm xkbcommon xkbcommon-x11)
pkg_check_modules(QorlSystem REQUIRED QUIET IMPORTED_TARGET ${QORL_PACKAGES})
find_package(Threads REQUIRED)
