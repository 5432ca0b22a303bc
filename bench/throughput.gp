# SPDX-License-Identifier: Apache-2.0
# Draws what arrives over what is offered: data (a column for each stack, a row for each rate, k/s), target.
set terminal svg size 800,450 font "sans-serif,13" background "white"
set output target
set key top left autotitle columnhead
set grid
set xlabel "offered, thousand values a second"
set ylabel "received, thousand values a second"
columns = int(system("awk 'NR == 1 {print NF}' " . data))
plot for [i = 2:columns] data using 1:i with linespoints linewidth 2
