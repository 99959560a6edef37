# The commands of every day. The build itself is CMake's; its presets are in CMakePresets.json.
#
#   make run [ARCHIVE=file.mbox]   install what is missing, build, import the archive, open the window
#   make test                      install what is missing, build, run every check and test
#   make bench                     measure (BENCH_FLAGS="--quick" for a short run)
#   make screenshots [MAIL="FILE..."]   draw the sheets into docs/pictures, and HTML files and messages as the
#                                  window shows them into build/pages
#   make install [PREFIX=/usr/local] [DESTDIR=]   build and install the programs
#   make translations              bring po/ in line with the texts of the sources
#   make lint                      formatting, layering, script and static checks
#   make clean                     remove the build folders

ARCHIVE ?=
TIDEWRACK_CORPUS ?=
BENCH_FLAGS ?=
MAIL ?=
# Window programs draw on a display of their own.
ON_DISPLAY = GDK_BACKEND=x11 GSK_RENDERER=cairo xvfb-run -a -s "-screen 0 1280x1000x24" dbus-run-session --
PREFIX ?= /usr/local
DESTDIR ?=
CONFIGURE_FLAGS = -DTIDEWRACK_CORPUS="$(TIDEWRACK_CORPUS)"

.PHONY: all packages build run test bench screenshots install translations lint clean

all: build

packages:
	@tools/install-packages

build: packages
	cmake --preset release $(CONFIGURE_FLAGS)
	cmake --build --preset release

run: packages
	cmake --preset release
	cmake --build --preset release --target programs
	tools/run "$(ARCHIVE)"

# The layers below the window are tested a second time under the address and undefined-behaviour sanitizers.
test: build lint
	cmake --preset debug $(CONFIGURE_FLAGS)
	cmake --build --preset debug
	ctest --preset release
	ctest --preset debug

bench: packages
	cmake --preset bench
	cmake --build --preset bench
	build/bench/tidewrack-bench $(BENCH_FLAGS)
	cmake --preset release
	cmake --build --preset release --target tidewrack-reading-figures tidewrack-list-figures \
	  tidewrack-window-bench
	$(ON_DISPLAY) build/release/tidewrack-reading-figures
	$(ON_DISPLAY) build/release/tidewrack-list-figures
	$(ON_DISPLAY) build/release/tidewrack-window-bench

PAGES = $(or $(MAIL),$(wildcard $(TIDEWRACK_CORPUS)/html/*.html $(TIDEWRACK_CORPUS)/html/*.eml))
SHEET_PICTURES = $(ON_DISPLAY) build/release/tidewrack-sheet-pictures

screenshots: packages
	cmake --preset release
	cmake --build --preset release --target tidewrack-page-sheets tidewrack-sheet-pictures
	mkdir -p docs/pictures
	TIDEWRACK_PICTURES=docs/pictures $(SHEET_PICTURES)
	TIDEWRACK_PICTURES=docs/pictures TIDEWRACK_DARK=1 $(SHEET_PICTURES) --gtest_filter='*Settings'
	$(if $(PAGES),$(ON_DISPLAY) build/release/tidewrack-page-sheets build/pages $(PAGES))

# A package's own scripts tell the desktop of the new files; without one that is done here.
install: packages
	cmake --preset release
	cmake --build --preset release --target programs
	DESTDIR="$(DESTDIR)" cmake --install build/release --prefix "$(PREFIX)"
	@if [ -z "$(DESTDIR)" ]; then \
	  update-desktop-database -q "$(PREFIX)/share/applications" 2>/dev/null || true; \
	  gtk4-update-icon-cache -qtf "$(PREFIX)/share/icons/hicolor" 2>/dev/null || true; \
	fi

translations:
	tools/update-translations

lint: packages
	tools/lint

clean:
	rm -rf build
