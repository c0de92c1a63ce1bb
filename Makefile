# The two commands of the README. Each installs what it needs (Debian 12),
# configures and builds.
BUILD ?= build
JOBS ?= $(shell nproc)

.PHONY: demo test build deps clean

deps:
	@./.ci/install-deps

$(BUILD)/build.ninja: | deps
	cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: deps $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS)

test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

demo: build
	./examples/demo.sh $(BUILD)

clean:
	rm -rf $(BUILD)
