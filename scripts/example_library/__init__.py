# SPDX-License-Identifier: Apache-2.0
"""Parts of the generator of the example symbol library (see ../make_example_library.py)."""
