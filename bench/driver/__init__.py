"""The parts of run.py, one concept a file."""
