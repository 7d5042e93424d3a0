"""A wheel for one platform and any Python 3: it carries the library, and nothing is compiled."""

from setuptools import setup
from wheel.bdist_wheel import bdist_wheel


class PlatformWheel(bdist_wheel):
    def finalize_options(self) -> None:
        super().finalize_options()
        self.root_is_pure = False

    def get_tag(self):
        return "py3", "none", super().get_tag()[2]


setup(cmdclass={"bdist_wheel": PlatformWheel})
