# shellcheck shell=bash
# Debian source packages, fetched without touching the machine's own apt configuration.  Sourced by scripts/setup.

# The machine's own Debian archives (security updates among them), asked for sources instead of programs.  Sorted by
# suite, the release first: apt takes the first that lists a version, and the security archive lists some that it lacks.
source_list() {
  # shellcheck disable=SC2016  # apt fills these in
  apt-get indextargets --format 'deb-src $(REPO_URI) $(RELEASE) $(COMPONENT) $(ORIGIN)' 'Created-By: Packages' |
    sed -n 's/ Debian$//p' | LC_ALL=C sort -u -k3
}

own_apt() {
  local apt=$CACHE/apt program=$1
  shift
  "$program" -qq -o Dir::Etc::sourcelist="$apt/sources.list" -o Dir::Etc::sourceparts=/dev/null \
    -o Dir::State::lists="$apt/lists" -o Dir::Cache="$apt/cache" -o APT::Sandbox::User="$(id -un)" "$@"
}

# Reads the archives' lists of sources, once per run.
update_source_lists() {
  [[ -z ${source_lists_read:-} ]] || return 0
  mkdir -p "$CACHE"/apt/{lists,cache}/partial "$CACHE/apt/cache/archives/partial"
  source_list >"$CACHE/apt/sources.list"
  if [[ ! -s $CACHE/apt/sources.list ]]; then
    logged packages as_root apt-get -qq update
    source_list >"$CACHE/apt/sources.list"
  fi
  [[ -s $CACHE/apt/sources.list ]] || die "apt knows no Debian archive to fetch sources from"
  logged packages own_apt apt-get update
  source_lists_read=yes
}

# The pinned version, or the newest one of the same upstream version when the archive has moved on.
available_version() {
  local package=$1 pinned=$2 versions
  versions=$(own_apt apt-cache showsrc --only-source "$package" | sed -n 's/^Version: //p')
  if grep -qxF -- "$pinned" <<<"$versions"; then
    echo "$pinned"
  else
    awk -v upstream="${pinned%-*}-" 'index($0, upstream) == 1' <<<"$versions" | sort -V | tail -n 1
  fi
}

# Unpacks a source package, Debian's patches applied, to the folder $3.
unpack_source() {
  local package=$1 pinned=$2 folder=$3 version
  update_source_lists
  version=$(available_version "$package" "$pinned")
  [[ -n $version ]] || die "the Debian archive has no $package of upstream version ${pinned%-*}"
  [[ $version == "$pinned" ]] || say "$package: $pinned has left the archive, taking $version"

  rm -rf "$folder" "$folder.download"
  mkdir -p "$folder.download"
  (cd "$folder.download" && logged "$package" own_apt apt-get source --download-only "$package=$version") || exit
  # apt has checked the files against the archive's signed lists.
  logged "$package" dpkg-source --no-check --no-copy -x "$folder.download"/*.dsc "$folder"
  rm -rf "$folder.download"
}
