# Sourced by the other scripts: installs Debian packages that are missing.

build_packages=(g++ cmake ninja-build qt6-base-dev libgl1-mesa-dev libpugixml-dev
    libdeflate-dev unixodbc-dev libcurl4-openssl-dev)
run_packages=(tzdata fonts-inter fonts-dejavu-core)
test_packages=(clang-format mdbtools chromium mariadb-server-core mariadb-client-core odbc-mariadb tdsodbc
    systemd cron dpkg-dev lintian bsdutils python3-jsonschema python3-aiosmtpd openssl qpdf
    poppler-utils)
clang_packages=(clang clang-tidy)
screenshot_packages=(xvfb xauth)
bench_packages=(rrdtool mdbtools mariadb-server-core mariadb-client-core odbc-mariadb)

# ensure_packages PACKAGE... : does nothing when all are installed.
ensure_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    command -v apt-get >/dev/null || {
        echo "Missing packages (this is no Debian system): ${missing[*]}" >&2
        return 1
    }
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    echo "Installing: ${missing[*]}"
    local try
    for try in 1 2 3; do
        if "${as_root[@]}" apt-get -qq update &&
            DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get -qq install -y \
                --no-install-recommends "${missing[@]}" </dev/null >/dev/null; then
            return
        fi
        [ "$try" = 3 ] || sleep 5
    done
    echo "Could not install: ${missing[*]}" >&2
    return 1
}
