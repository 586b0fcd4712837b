#!/bin/sh
# Makes the Debian packages, asks lintian, and runs what they hold.
# usage: debian_test.sh BUILD-DIRECTORY VERSION [with-tools [with-python]]
set -eu
# shellcheck source=tests/package/common.sh
. "$(dirname "$0")/common.sh"
build=$1
version=$2

cd "$build"
quietly "cpack makes no packages" cpack -G DEB -B "$scratch/packages"
cd "$scratch/packages"
packages="libcompute-runtime libqvr-dev libnodusmath libnodusmath-dev"
[ "${3:-}" != with-tools ] || packages="$packages nodus-tools"
[ "${4:-}" != with-python ] || packages="$packages python3-nodusmath"
for package in $packages; do
    file=$(echo "${package}_${version}"_*.deb)
    [ -f "$file" ] || fail "there is no package $package"
    dpkg-deb -x "$file" "$scratch/root"
    depends=$(dpkg-deb -f "$file" Depends)
    case $package in
    libcompute-runtime) wanted="libstdc++6" ;;
    libqvr-dev) wanted="" ;;
    *) wanted="libcompute-runtime (= $version)" ;;
    esac
    case $depends in
    *"$wanted"*) ;;
    *) fail "$package depends on '$depends', without $wanted" ;;
    esac
done

if [ "${3:-}" = with-tools ]; then
    [ -n "$("$scratch/root/usr/bin/nodus" list)" ] || fail "the packaged command lists no kernels"
fi
[ "${4:-}" != with-python ] || python_adds "$scratch/root"

as_root=""
[ "$(id -u)" != 0 ] || as_root=--allow-root
lintian $as_root --fail-on error ./*.deb || fail "lintian found an error"
