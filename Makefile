# The commands for people. `make demo` and `make test` install what is missing (scripts/deps: as
# root or with sudo, on Debian 12), build the release preset in build/release, and do their work.

PRESET ?= release
JOBS ?= $(shell nproc)
# More for CMake: make CMAKE_ARGS=-DZEL_REQUIRE_ALL_PLUGINS=ON
CMAKE_ARGS ?=
# A picture to convert instead of the painted one: make demo IMAGE=photo.tif
IMAGE ?=

BUILD := build/$(PRESET)
ZEL := $(BUILD)/bin/zel
DEMO := build/demo

.PHONY: all configure demo test bench bench-peers format lint docs clean

all: configure
	@echo "== Building everything in $(BUILD)"
	@cmake --build --preset $(PRESET) -j $(JOBS)

configure:
	@echo "== Looking for the packages that the build needs"
	@scripts/deps
	@echo "== Configuring the preset $(PRESET) in $(BUILD)"
	@cmake --preset $(PRESET) $(CMAKE_ARGS) >/dev/null

demo: configure
	@echo "== Building the library, the plug-ins, the command zel and the example paint"
	@cmake --build --preset $(PRESET) -j $(JOBS) --target zel_tool zel_plugins paint
	@mkdir -p $(DEMO)
ifeq ($(IMAGE),)
	@echo "== Painting a picture through the library: examples/paint.cpp"
	$(BUILD)/bin/paint $(DEMO)/picture.ppm
endif
	@echo "== The formats of this build"
	$(ZEL) formats
	@echo "== Converting the picture to a tiled, compressed, 16-bit TIFF"
	$(ZEL) info $(or $(IMAGE),$(DEMO)/picture.ppm)
	$(ZEL) convert $(or $(IMAGE),$(DEMO)/picture.ppm) $(DEMO)/picture.tif --type ushort --compression lzw --page 64x64
	@echo "== What has come out"
	$(ZEL) info -v $(DEMO)/picture.tif

test: all
	@echo "== Running the tests"
	@ctest --preset $(PRESET) -j $(JOBS)

bench: all
	@echo "== Running the benchmarks, for about five minutes"
	@bench/tables $(BUILD)

bench-peers: all
	@scripts/deps peers
	@echo "== Converting the same files with zel and its peers, for about ten minutes"
	@bench/peers --build $(BUILD)

format:
	@scripts/deps ci
	@git ls-files '*.h' '*.cpp' | xargs clang-format -i

lint:
	@scripts/deps ci
	@scripts/lint

docs:
	@scripts/deps ci
	@mkdir -p build/docs
	@doxygen docs/Doxyfile
	@echo "== The pages begin at build/docs/html/index.html"

clean:
	rm -rf build
