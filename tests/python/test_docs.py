"""What docs/python.md says to write runs."""

import re
from pathlib import Path

pytest_plugins = "pytester"
PAGE = Path(__file__).parents[2] / "docs" / "python.md"


def test_the_tests_of_the_page_pass(pytester):
    blocks = re.findall(r"^```python\n(.*?)^```$", PAGE.read_text(), re.MULTILINE | re.DOTALL)
    code = "\n\n".join(blocks)
    pytester.makepyfile(code)
    result = pytester.runpytest_subprocess("-n", "2", "-p", "no:cacheprovider")
    result.assert_outcomes(passed=len(re.findall(r"^def test_", code, re.MULTILINE)))


def test_a_failed_test_shows_what_the_services_logged(pytester):
    pytester.makepyfile("""
        def test_fails(phone):
            phone.run(["sh", "-c", 'kill -HUP $(ozdevice pps get system/ozdeviced/status pid)'])
            phone.wait_until("battery.level == 3", within=1)
    """)
    result = pytester.runpytest_subprocess("-p", "no:cacheprovider")
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(["*expected battery.level == 3; *level is 80*", "*Services of phone 1*", "*read anew*"])
