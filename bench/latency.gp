# SPDX-License-Identifier: Apache-2.0
# Draws the distribution of round-trip times: data (a column for each stack, a row for each percentile), target.
set terminal svg size 800,450 font "sans-serif,13" background "white"
set output target
set key top left autotitle columnhead
set grid
set logscale y
set xlabel "round trips that are as fast, %"
set ylabel "time, µs"
columns = int(system("awk 'NR == 1 {print NF}' " . data))
plot for [i = 2:columns] data using 1:i with lines linewidth 2
