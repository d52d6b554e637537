# Sourced by scripts/build-windows: the libraries of the Windows program, cross-built from the source
# packages of Debian and kept in a cache folder outside the tree. A library is built anew when its
# version, its options, the compiler or the toolchain file change.

windows_packages=(g++-mingw-w64-x86-64-posix gcc-mingw-w64-x86-64-posix mingw-w64-tools dpkg-dev
    qt6-base-dev-tools tcl librsvg2-bin icoutils zip)
windows_test_packages=(wine wine64 xvfb xauth x11-utils fonts-wine imagemagick unzip)
cache=${VANTREL_CACHE:-$HOME/.cache/vantrel}
toolchain=$PWD/cmake/Windows.toolchain.cmake
cross=x86_64-w64-mingw32
low=(nice -n 10)

# The machine's own Debian mirrors, with their source packages, without touching its configuration.
apt_folder=$cache/apt
prepare_apt() {
    [ -z "${apt_prepared:-}" ] || return 0
    mkdir -p "$apt_folder/lists/partial"
    apt-get indextargets --format 'deb-src $(REPO_URI) $(CODENAME) main' \
        'Created-By: Packages' 'Origin: Debian' 'Component: main' | sort -u >"$apt_folder/sources.list"
    [ -s "$apt_folder/sources.list" ] || {
        echo "apt-get knows no Debian mirror: run apt-get update" >&2
        return 1
    }
    cat >"$apt_folder/apt.conf" <<END
Dir::Etc::sourcelist "$apt_folder/sources.list";
Dir::Etc::sourceparts "-";
Dir::State::lists "$apt_folder/lists";
Dir::Cache::srcpkgcache "";
Dir::Cache::pkgcache "";
APT::Sandbox::User "root";
END
    apt_prepared=1
    APT_CONFIG=$apt_folder/apt.conf apt-get -qq update
}

# source_version PACKAGE: the version of the source of an installed package.
source_version() {
    dpkg-query -W -f='${source:Version}' "$1"
}

# fetch_source PACKAGE VERSION: unpacks it into $work/PACKAGE, patched as Debian has it.
fetch_source() {
    mkdir -p "$work"
    rm -rf "${work:?}/$1"
    (cd "$work" && APT_CONFIG=$apt_folder/apt.conf apt-get -qq source "$1=$2" >/dev/null)
    mv "$work/$1"-[0-9]*/ "$work/$1"
    rm -f "$work/$1"_*
}

# keep_licence PACKAGE PREFIX: what Debian records of its authors and terms.
keep_licence() {
    mkdir -p "$2/licences"
    cp "$work/$1/debian/copyright" "$2/licences/$1.txt"
}

cross_cmake() { # SOURCE BUILD PREFIX OPTION...
    local source=$1 build=$2 prefix=$3
    shift 3
    "${low[@]}" cmake -G Ninja -S "$source" -B "$build" -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" -DBUILD_SHARED_LIBS=OFF "$@"
}

# Qt's tools are this machine's own, of the same version.
qt_host=(-DQT_HOST_PATH=/usr
    "-DQT_HOST_PATH_CMAKE_DIR=/usr/lib/$(dpkg --print-architecture | sed 's/amd64/x86_64/; s/arm64/aarch64/')-linux-gnu/cmake")
qt_options=(
    -DQT_QMAKE_TARGET_MKSPEC=win32-g++
    -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DQT_BUILD_TOOLS_WHEN_CROSSCOMPILING=OFF
    -DFEATURE_pkg_config=OFF
    -DFEATURE_system_zlib=OFF -DFEATURE_system_png=OFF -DFEATURE_system_jpeg=OFF
    -DFEATURE_system_freetype=OFF -DFEATURE_system_harfbuzz=OFF -DFEATURE_system_pcre2=OFF
    -DFEATURE_system_doubleconversion=OFF
    -DINPUT_opengl=no -DFEATURE_opengl=OFF -DFEATURE_vulkan=OFF
    -DFEATURE_network=OFF -DFEATURE_dbus=OFF -DFEATURE_sql=OFF -DFEATURE_zstd=OFF
    -DFEATURE_icu=OFF -DFEATURE_glib=OFF
    # Debian's source package lacks what pen tablets need.
    -DFEATURE_tabletevent=OFF
    -DFEATURE_direct2d=ON -DFEATURE_direct2d1_1=OFF
    -DFEATURE_xml=ON -DFEATURE_printsupport=ON -DFEATURE_testlib=ON)
build_qt() { # VERSION PREFIX
    fetch_source qt6-base "$1"
    cross_cmake "$work/qt6-base" "$work/qt6-base-build" "$2" "${qt_host[@]}" \
        "${qt_options[@]}" >"$work/qt6-base.log"
    "${low[@]}" cmake --build "$work/qt6-base-build" >>"$work/qt6-base.log"
    cmake --install "$work/qt6-base-build" >>"$work/qt6-base.log"
    keep_licence qt6-base "$2"
}

pugixml_options=(-DPUGIXML_BUILD_TESTS=OFF)
build_pugixml() {
    fetch_source pugixml "$1"
    cross_cmake "$work/pugixml" "$work/pugixml-build" "$2" "${pugixml_options[@]}" >/dev/null
    cmake --build "$work/pugixml-build" -- --quiet
    cmake --install "$work/pugixml-build" >/dev/null
    keep_licence pugixml "$2"
}

libdeflate_options=(-O2)
build_libdeflate() {
    fetch_source libdeflate "$1"
    (cd "$work/libdeflate" && "${low[@]}" make -s CC=$cross-gcc-posix AR=$cross-gcc-ar-posix \
        CFLAGS="${libdeflate_options[*]}" libdeflatestatic.lib >/dev/null)
    mkdir -p "$2/lib" "$2/include"
    cp "$work/libdeflate/libdeflatestatic.lib" "$2/lib/libdeflate.a"
    cp "$work/libdeflate/libdeflate.h" "$2/include"
    keep_licence libdeflate "$2"
}

# Mail alone: SMTP over Windows' own TLS, host names in any script. HTTP stays in, as Debian's
# patches of this version call it from what SMTP needs; the program allows no other protocol.
curl_options=(
    -DBUILD_CURL_EXE=OFF -DBUILD_TESTING=OFF -DENABLE_MANUAL=OFF -DENABLE_UNICODE=ON
    -DCURL_USE_SCHANNEL=ON -DCURL_WINDOWS_SSPI=ON -DUSE_WIN32_IDN=ON -DUSE_LIBIDN2=OFF
    -DCURL_ZLIB=OFF -DCURL_USE_LIBPSL=OFF -DCURL_USE_LIBSSH2=OFF -DENABLE_UNIX_SOCKETS=OFF
    -DCURL_DISABLE_HTTP_AUTH=ON -DCURL_DISABLE_HSTS=ON -DCURL_DISABLE_ALTSVC=ON
    -DCURL_DISABLE_COOKIES=ON -DCURL_DISABLE_DOH=ON -DCURL_DISABLE_PROXY=ON -DCURL_DISABLE_NTLM=ON
    -DCURL_DISABLE_DICT=ON -DCURL_DISABLE_FILE=ON -DCURL_DISABLE_FTP=ON -DCURL_DISABLE_GOPHER=ON
    -DCURL_DISABLE_IMAP=ON -DCURL_DISABLE_LDAP=ON -DCURL_DISABLE_LDAPS=ON -DCURL_DISABLE_MQTT=ON
    -DCURL_DISABLE_POP3=ON -DCURL_DISABLE_RTSP=ON -DCURL_DISABLE_SMB=ON -DCURL_DISABLE_TELNET=ON
    -DCURL_DISABLE_TFTP=ON)
build_curl() {
    fetch_source curl "$1"
    cross_cmake "$work/curl" "$work/curl-build" "$2" "${curl_options[@]}" >/dev/null
    "${low[@]}" cmake --build "$work/curl-build" -- --quiet
    cmake --install "$work/curl-build" >/dev/null
    keep_licence curl "$2"
}

# The terms of the compiler's own run-time parts that end up in the program.
keep_toolchain_licences() { # FOLDER
    cp /usr/share/doc/mingw-w64-common/copyright "$1/mingw-w64.txt"
    cp /usr/share/doc/gcc-mingw-w64-base/copyright "$1/gcc-mingw-w64.txt"
}

# ensure_library NAME INSTALLED: the library in the version of which this machine has the
# package INSTALLED, so that both systems' programs hold the same. Adds its folder to `prefixes`.
prefixes=()
ensure_library() {
    local name=$1 version hash prefix
    version=$(source_version "$2")
    local -n options=${name}_options
    hash=$({
        printf '%s\n' "${options[@]}"
        declare -f "build_$name"
        cat "$toolchain"
        $cross-gcc-posix -dumpfullversion
    } | sha256sum | cut -c1-12)
    prefix=$cache/$name-${version%%[-+]*}-$hash
    prefixes+=("$prefix")
    [ ! -e "$prefix/built" ] || return 0
    prepare_apt
    echo "Building $name $version for Windows (once; into $prefix)"
    work=$cache/work-$name
    rm -rf "$prefix" "$work"
    "build_$name" "$version" "$prefix"
    rm -rf "$work"
    touch "$prefix/built"
}

build_libraries() {
    ensure_library qt qt6-base-dev
    ensure_library pugixml libpugixml-dev
    ensure_library libdeflate libdeflate-dev
    ensure_library curl libcurl4-openssl-dev
}
