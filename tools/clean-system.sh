# Sourced by tools/check-installed and tools/check-distribution: a Debian system in a folder, made with debootstrap from
# the mirror that this machine's apt uses. Needs root.
# shellcheck shell=bash

script=$(basename -- "$0")

fail() {
  echo "$script: $*" >&2
  exit 1
}

# This machine cannot make such a system, which says nothing about Tavril.
cannot() {
  echo "$script: $*" >&2
  exit 3
}

# with_namespaces ARGUMENTS...: starts the script once more, with mounts and processes that end with it.
with_namespaces() {
  [ "$(id -u)" -eq 0 ] || cannot "only root can make a system: sudo tools/$script"
  unshare --mount --pid --fork true || cannot "namespaces for mounts and processes are not allowed here"
  exec unshare --mount --pid --fork --kill-child "tools/$script" --inside "$@"
}

own_release() { (. /etc/os-release && echo "$VERSION_CODENAME"); }

# The first mirror that apt has the release's main component from, or that of this machine's release.
mirror_of() {
  # shellcheck disable=SC2016 # apt's own variables
  apt-get indextargets --format '$(CODENAME) $(COMPONENT) $(REPO_URI)' 'Created-By: Packages' |
    awk -v release="$1" -v own="$(own_release)" '
      $2 == "main" && $1 == release && !known { known = $3 }
      $2 == "main" && $1 == own && !other { other = $3 }
      END { print known ? known : other }'
}

# The mounts first: rm must not get into what belongs to this machine.
remove_system() {
  local place
  for place in dev proc sys var/cache/ccache; do umount --recursive "$root/$place" 2>/dev/null || true; done
  grep -qF " $root/" /proc/self/mountinfo || rm -rf --one-file-system "$folder"
}

# make_system RELEASE: sets root, the folder of the system, and log, a file for what is said meanwhile. The system is
# removed at the end. Where TAVRIL_SYSTEMS names a folder, it is kept there and used again.
make_system() {
  local mirror
  folder=$(mktemp -d)
  log=$folder/log
  root=${TAVRIL_SYSTEMS:-$folder}/$1
  trap remove_system EXIT
  if [ ! -e "$root/etc/apt/apt.conf.d/99clean-system" ]; then
    mirror=$(mirror_of "$1")
    [ -n "$mirror" ] || cannot "apt has no mirror of $1"
    progress "making a system of $1 from $mirror"
    if ! debootstrap --variant=minbase "$1" "$root" "$mirror" >"$log" 2>&1; then
      tail -30 "$log"
      cannot "debootstrap has failed"
    fi
    # No service is started in there, and dates of a mirror that stands still are no reason to refuse it.
    printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
    chmod 755 "$root/usr/sbin/policy-rc.d"
    inside useradd --create-home tester
    # Sessions have such a folder, and Qt would make itself one without.
    inside install --directory --mode=700 --owner=tester /run/tester
    printf 'Acquire::Retries "3";\nAcquire::Check-Valid-Until "false";\n' >"$root/etc/apt/apt.conf.d/99clean-system"
  fi
  mount --types proc proc "$root/proc"
  # What a device is stands there; nothing is to be changed.
  mount --bind /sys "$root/sys"
  mount -o remount,bind,ro "$root/sys"
  mount --rbind /dev "$root/dev"
  mount --make-rslave "$root/dev"
}

inside() { chroot "$root" /usr/bin/env -i TAVRIL_LOG=0 PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"; }

# An ordinary user, who has no network.
as_user() { inside unshare --net runuser -u tester -- env HOME=/home/tester XDG_RUNTIME_DIR=/run/tester "$@"; }

# The numbers of the registers in a read-out.
registers() { awk 'NF >= 3 && $1 ~ /^[0-9]+$/ { print $1 }'; }
