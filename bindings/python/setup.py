"""A wheel for one platform and any Python 3: it carries the library, and nothing is compiled."""

from setuptools import Distribution, setup
from wheel.bdist_wheel import bdist_wheel


class PlatformDistribution(Distribution):
    def has_ext_modules(self) -> bool:
        return True


class PlatformWheel(bdist_wheel):
    def get_tag(self):
        return "py3", "none", super().get_tag()[2]


setup(distclass=PlatformDistribution, cmdclass={"bdist_wheel": PlatformWheel})
